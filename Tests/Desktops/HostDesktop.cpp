#include "Tests/Desktops/HostDesktop.h"

#include "Tests/Desktops/Pictures.h"

#include <csignal>
#include <fstream>

namespace velloren {

HostDesktop::HostDesktop(std::string name, const Bar& bar)
    : VirtualScreen(bar.place == Place::OnlyScreen ? Screens::One : Screens::TwoSideBySide),
      name(std::move(name)), bar(bar) {
    session = startPart("session");
    require([this] { return std::filesystem::exists(home / "home/ready"); }, "session", *session);
    withoutBar = picture();
}

HostDesktop::~HostDesktop() {
    barProcess.reset();
    session.reset();
}

std::unique_ptr<Process> HostDesktop::startPart(const std::string& part) {
    return start(HOST_SCRIPT, {name, part},
                 {{"SIDE", bar.side == Side::Top ? "top" : "bottom"},
                  {"SHADE", bar.shade == Shade::Light ? "light" : "dark"},
                  {"SCALE", std::to_string(bar.scale)},
                  {"SCREEN", bar.place == Place::OnlyScreen ? "0" : "1"}});
}

void HostDesktop::startBar() {
    const std::filesystem::path ready = home / "home/bar-ready";
    std::filesystem::remove(ready);
    barProcess = startPart("bar");
    require([&] { return std::filesystem::exists(ready); }, "ready bar", *barProcess);
    const auto shows = [this](const QImage& now) {
        return difference(withoutBar, now, barArea()).has_value();
    };
    require([&] { return !picture(shows).isNull(); }, "bar", *barProcess);
}

void HostDesktop::stopBar() {
    barProcess->signal(SIGKILL);
    barProcess->wait();
    const auto shows = [this](const QImage& now) { return !difference(withoutBar, now, barArea()); };
    require([&] { return !picture(shows).isNull(); }, "end of its bar", *barProcess);
}

Process::Environment HostDesktop::programEnvironment() const {
    Process::Environment variables;
    std::ifstream file(home / "home/ready");
    for (std::string line; std::getline(file, line);)
        variables[line.substr(0, line.find('='))] = line.substr(line.find('=') + 1);
    return variables;
}

QRect HostDesktop::screenArea() const {
    return {bar.place == Place::OnlyScreen ? 0 : width, 0, width, height};
}

QRect HostDesktop::barArea() const {
    constexpr int thickest = 48;
    QRect area = screenArea();
    area.setLeft(area.right() - area.width() / 4);
    if (bar.side == Side::Top)
        area.setBottom(thickest * bar.scale - 1);
    else
        area.setTop(area.bottom() + 1 - thickest * bar.scale);
    return area;
}

QImage HostDesktop::picture(const std::function<bool(const QImage&)>& shows) const {
    QImage last;
    const bool isThere = waitUntil([&] {
        QImage next = screen();
        const bool stays = next == last && (!shows || shows(next));
        last = std::move(next);
        return stays;
    });
    return isThere ? last : QImage();
}

} // namespace velloren
