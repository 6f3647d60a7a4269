#include "Tests/Support/VirtualDesktop.h"

#include "Platform/Foundation/FatalError.h"

#include <QRegularExpression>
#include <QString>

#include <chrono>
#include <csignal>
#include <fstream>
#include <thread>

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

/// Waits for a part of the desktop; where it does not come, what `part` printed is the reason.
void require(const std::function<bool()>& isThere, const char* what, const Process& part) {
    if (!VirtualDesktop::waitUntil(isThere))
        fatalError(std::string("the desktop in memory has no ") + what + "\n" + part.output());
}

} // namespace

VirtualDesktop::VirtualDesktop() {
    const auto setVariable = [this](const char* name, const std::optional<std::string>& value) {
        environment.push_back(std::make_unique<EnvironmentVariable>(name, value));
    };
    // The bus hands its own environment to what it starts, so that has to be there first.
    const std::filesystem::path folder = home.path();
    for (const auto& [name, below] :
         {std::pair("HOME", "home"), std::pair("XDG_DATA_HOME", "data"),
          std::pair("XDG_CONFIG_HOME", "config"), std::pair("XDG_STATE_HOME", "state"),
          std::pair("XDG_CACHE_HOME", "cache"), std::pair("XDG_RUNTIME_DIR", "runtime")}) {
        std::filesystem::create_directories(folder / below);
        setVariable(name, folder / below);
    }
    std::filesystem::permissions(folder / "runtime", std::filesystem::perms::owner_all);
    for (const char* name :
         {"WAYLAND_DISPLAY", "XDG_CURRENT_DESKTOP", "QT_QPA_PLATFORM", "LC_ALL", "LC_TIME"})
        setVariable(name, std::nullopt);
    setVariable("LANG", "C.UTF-8");
    setVariable("NO_AT_BRIDGE", "1");
    startDisplay();
    const std::filesystem::path settings = folder / "config/xfce4/xfconf/xfce-perchannel-xml";
    std::filesystem::create_directories(settings);
    std::ofstream(settings / "xfce4-panel.xml") << panelSettings;
    sessionBus = std::make_unique<PrivateBus>();
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

void VirtualDesktop::startDisplay() {
    const auto numberFile = home / "number";
    const std::string size = std::to_string(width) + "x" + std::to_string(height) + "x24";
    const std::vector<std::string> command{"sh", "-c",
                                           "exec Xvfb -displayfd 3 -nolisten tcp -noreset -screen 0 " + size +
                                               " 3>" + numberFile.string()};
    display = std::make_unique<Process>(command, Process::Environment(), home / "Xvfb");
    std::string number;
    require([&] { return static_cast<bool>(std::getline(std::ifstream(numberFile), number)); }, "X server",
            *display);
    environment.push_back(std::make_unique<EnvironmentVariable>("DISPLAY", ":" + number));
}

std::unique_ptr<Process> VirtualDesktop::start(const std::string& name,
                                               const std::vector<std::string>& options) {
    std::vector<std::string> arguments{name};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const std::filesystem::path program(name);
    return std::make_unique<Process>(arguments, Process::Environment(), folder() / program.filename());
}

int VirtualDesktop::run(const std::vector<std::string>& arguments, std::string* output) const {
    const TemporaryDirectory temporary;
    Process process(arguments, {}, temporary / "output");
    const int status = process.wait();
    if (output)
        *output = process.output();
    return status;
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
    return run({"dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus",
                "/org/freedesktop/DBus", "org.freedesktop.DBus.GetNameOwner",
                "string:org.kde.StatusNotifierWatcher"}) == 0;
}

int VirtualDesktop::itemCount() const {
    std::string output;
    run({"dbus-send", "--session", "--print-reply", "--dest=org.kde.StatusNotifierWatcher",
         "/StatusNotifierWatcher", "org.freedesktop.DBus.Properties.Get",
         "string:org.kde.StatusNotifierWatcher", "string:RegisteredStatusNotifierItems"},
        &output);
    return int(QString::fromStdString(output).count(QStringLiteral("string \"")));
}

void VirtualDesktop::moveTo(QPoint place) const {
    run({"xdotool", "mousemove", std::to_string(place.x()), std::to_string(place.y())});
}

void VirtualDesktop::click(QPoint place, int button) const {
    run({"xdotool", "mousemove", std::to_string(place.x()), std::to_string(place.y()), "click",
         std::to_string(button)});
}

void VirtualDesktop::type(const std::string& key) const {
    run({"xdotool", "key", key});
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

QImage VirtualDesktop::screen() const {
    const TemporaryDirectory temporary;
    const auto file = temporary / "screen.png";
    run({"import", "-window", "root", file.string()});
    return QImage(QString::fromStdString(file.string()));
}

bool VirtualDesktop::isHighlight(QColor color) {
    return color.blue() > 200 && color.red() < 100; // the panel blends it a little
}

bool VirtualDesktop::iconIsHighlighted() const {
    return isHighlight(screen().pixelColor(icon - aboveGlyph));
}

bool VirtualDesktop::waitUntil(const std::function<bool()>& condition) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > limit)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

} // namespace velloren
