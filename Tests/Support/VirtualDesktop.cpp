#include "Tests/Support/VirtualDesktop.h"

#include <QRegularExpression>
#include <QString>

namespace velloren {

VirtualDesktop::VirtualDesktop() : HostDesktop("xfce") {
    startBar();
}

void VirtualDesktop::stopPanel() {
    stopBar();
    waitUntil([this] { return !hasTray(); });
}

bool VirtualDesktop::hasTray() const {
    return bus().hasOwner("org.kde.StatusNotifierWatcher");
}

int VirtualDesktop::itemCount() const {
    const auto items = bus().call(
        "org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher", "org.freedesktop.DBus.Properties.Get",
        {"string:org.kde.StatusNotifierWatcher", "string:RegisteredStatusNotifierItems"});
    return int(QString::fromStdString(items.value_or("")).count(QStringLiteral("string \"")));
}

std::optional<QRect> VirtualDesktop::popover() const {
    return agentWindow([](QSize size) { return size.width() >= 320; });
}

std::optional<QRect> VirtualDesktop::menu() const {
    return agentWindow([](QSize size) { return size.width() < 320 && size.height() > 50; });
}

std::optional<QRect> VirtualDesktop::legacyIcon() const {
    return agentWindow([](QSize size) { return size.width() >= 16 && size.width() <= 50; });
}

std::optional<QRect> VirtualDesktop::agentWindow(const std::function<bool(QSize)>& fits) const {
    std::string tree;
    run({"xwininfo", "-root", "-tree"}, &tree);
    // A line of a window: its number, "name", ("instance" "class"), size and place in its parent, place on
    // the screen.
    static const QRegularExpression window(QStringLiteral(
        R"((0x\w+) .*\("velloren-menu" "velloren-menu"\)\s+(\d+)x(\d+)\+\S+\s+\+(-?\d+)\+(-?\d+))"));
    auto matches = window.globalMatch(QString::fromStdString(tree));
    while (matches.hasNext()) {
        const auto match = matches.next();
        const QRect geometry(match.captured(4).toInt(), match.captured(5).toInt(), match.captured(2).toInt(),
                             match.captured(3).toInt());
        if (fits(geometry.size()) && isViewable(match.captured(1).toStdString()))
            return geometry;
    }
    return std::nullopt;
}

bool VirtualDesktop::isViewable(const std::string& window) const {
    std::string state;
    run({"xwininfo", "-id", window, "-stats"}, &state);
    return state.find("IsViewable") != std::string::npos;
}

} // namespace velloren
