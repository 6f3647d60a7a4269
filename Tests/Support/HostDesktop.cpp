#include "Tests/Support/HostDesktop.h"

#include <array>
#include <csignal>
#include <fstream>

namespace velloren {

namespace {

QTransform turnOf(Side side) {
    constexpr int width = VirtualScreen::width;
    constexpr int height = VirtualScreen::height;
    switch (side) {
    case Side::Top:
        return {};
    case Side::Bottom:
        return {1, 0, 0, -1, 0, height};
    case Side::Left:
        return {0, 1, 1, 0, 0, 0};
    case Side::Right:
        return {0, -1, 1, 0, 0, width};
    }
    return {};
}

} // namespace

std::optional<std::string> HostDesktop::reasonForNone(const std::string& name) {
    const TemporaryDirectory temporary;
    Process check({HOST_SCRIPT, name, "check"}, {}, temporary / "output");
    return check.wait() == 77 ? std::optional(check.output()) : std::nullopt;
}

HostDesktop::HostDesktop(std::string name, const Bar& bar)
    : VirtualScreen(bar.screens), name(std::move(name)), bar(bar), turn(turnOf(bar.side)) {
    session = startPart("session");
    require([this] { return std::filesystem::exists(home / "home/ready"); }, "session", *session);
}

HostDesktop::~HostDesktop() {
    barProcess.reset();
    session.reset();
}

std::unique_ptr<Process> HostDesktop::startPart(const std::string& part) {
    constexpr std::array sides{"top", "bottom", "left", "right"};
    return start(HOST_SCRIPT, {name, part},
                 {{"SIDE", sides.at(std::size_t(bar.side))},
                  {"SHADE", bar.shade == Shade::Light ? "light" : "dark"},
                  {"SCALE", QString::number(bar.scale).toStdString()},
                  {"SCREEN", bar.screens == Screens::One ? "0" : "1"}});
}

void HostDesktop::startBar() {
    const std::filesystem::path ready = home / "home/bar-ready";
    std::filesystem::remove(ready);
    barProcess = startPart("bar");
    require([&] { return std::filesystem::exists(ready); }, "bar", *barProcess);
}

void HostDesktop::stopBar() {
    barProcess->signal(SIGKILL);
    barProcess->wait();
}

Process::Environment HostDesktop::programEnvironment() const {
    Process::Environment variables;
    std::ifstream file(home / "home/ready");
    for (std::string line; std::getline(file, line);)
        variables[line.substr(0, line.find('='))] = line.substr(line.find('=') + 1);
    return variables;
}

QPoint HostDesktop::onScreen(QPoint place) const {
    // Of the pixel its middle: turned around, its corner would be another one's.
    const QPointF middle = turn.inverted().map(QPointF(place) + QPointF(0.5, 0.5));
    return QPoint(int(middle.x()), int(middle.y())) + QPoint(bar.screens == Screens::One ? 0 : width, 0);
}

QImage HostDesktop::look() const {
    return screen().copy(bar.screens == Screens::One ? 0 : width, 0, width, height).transformed(turn);
}

QImage HostDesktop::picture(const std::function<bool(const QImage&)>& shows) const {
    constexpr int looks = 10;
    QImage last;
    int unchanged = 0;
    const bool stays = waitUntil([&] {
        QImage next = look();
        unchanged = next == last ? unchanged + 1 : 0;
        last = std::move(next);
        return unchanged >= looks && shows(last);
    });
    return stays ? last : QImage();
}

} // namespace velloren
