#include "Tests/Support/VirtualDesktop.h"

#include <QRegularExpression>
#include <QString>

#include <csignal>
#include <fstream>

namespace velloren {

namespace {

constexpr auto panelSettings = R"(<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array"><value type="int" value="1"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="length" type="uint" value="100"/>
      <property name="size" type="uint" value="30"/>
      <property name="icon-size" type="uint" value="22"/>
      <property name="plugin-ids" type="array">
        <value type="int" value="1"/><value type="int" value="2"/><value type="int" value="3"/></property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="separator">
      <property name="expand" type="bool" value="true"/></property>
    <property name="plugin-2" type="string" value="systray">
      <property name="square-icons" type="bool" value="true"/></property>
    <property name="plugin-3" type="string" value="separator"/>
  </property>
</channel>
)";

} // namespace

VirtualDesktop::VirtualDesktop() {
    const std::filesystem::path settings = home / "config/xfce4/xfconf/xfce-perchannel-xml";
    std::filesystem::create_directories(settings);
    std::ofstream(settings / "xfce4-panel.xml") << panelSettings;
    windowManager = start("xfwm4", {"--compositor=on"});
    require(
        [this] {
            std::string answer;
            run({"xprop", "-root", "_NET_SUPPORTING_WM_CHECK"}, &answer);
            return answer.find("window id") != std::string::npos;
        },
        "window manager", *windowManager);
    startPanel();
}

void VirtualDesktop::startPanel() {
    panel = start("xfce4-panel", {"--disable-wm-check"});
    require([this] { return hasTray(); }, "panel", *panel);
}

void VirtualDesktop::stopPanel() {
    panel->signal(SIGKILL);
    panel->wait();
    require([this] { return !hasTray(); }, "end of its panel", *panel);
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

bool VirtualDesktop::isHighlight(QColor color) {
    return color.blue() > 200 && color.red() < 100; // the panel blends it a little
}

bool VirtualDesktop::iconIsHighlighted() const {
    return isHighlight(screen().pixelColor(icon - aboveGlyph));
}

} // namespace velloren
