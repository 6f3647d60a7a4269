#include "Tests/Support/VirtualScreen.h"

#include "Platform/Foundation/FatalError.h"
#include "Platform/Freedesktop/Windowing/X11/X11Display.h"

#include <xcb/xcb.h>

#include <chrono>
#include <fstream>
#include <thread>

namespace velloren {

namespace {

/// A zone whose clocks show about noon now, so that a meeting soon is one today at any hour.
std::string zoneAtNoon() {
    using namespace std::chrono;
    const auto now = system_clock::now();
    const auto ahead = 12 - floor<hours>(now - floor<days>(now)).count();
    // Such a name gives what has to be added to get to UTC.
    return std::string("Etc/GMT") + (ahead > 0 ? "-" : "+") + std::to_string(std::abs(ahead));
}

} // namespace

VirtualScreen::VirtualScreen(Screens screens) {
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
    setVariable("TZ", zoneAtNoon());
    setVariable("NO_AT_BRIDGE", "1");
    startDisplay(screens);
    sessionBus = std::make_unique<PrivateBus>();
}

void VirtualScreen::setVariable(const char* name, const std::optional<std::string>& value) {
    environment.push_back(std::make_unique<EnvironmentVariable>(name, value));
}

void VirtualScreen::require(const std::function<bool()>& isThere, const char* what, const Process& part) {
    if (!waitUntil(isThere))
        fatalError(std::string("the desktop in memory has no ") + what + "\n" + part.output());
}

void VirtualScreen::startDisplay(Screens screens) {
    const auto numberFile = home / "number";
    const std::string socket = home / "screens";
    const auto size = [](int columns) { return std::to_string(columns) + "x" + std::to_string(height); };
    const std::string server = screens == Screens::One
                                   ? "Xvfb -nolisten tcp -noreset -screen 0 " + size(width) + "x24"
                                   // Toolkits do not see what is made of Xvfb's only screen.
                                   : "Xtigervnc -nolisten tcp -noreset -SecurityTypes None -rfbport -1 "
                                     "-rfbunixpath " +
                                         socket + " -geometry " + size(2 * width);
    const std::vector<std::string> command{"sh", "-c",
                                           "exec " + server + " -displayfd 3 3>" + numberFile.string()};
    display = std::make_unique<Process>(command, Process::Environment(), home / "X");
    std::string number;
    require([&] { return static_cast<bool>(std::getline(std::ifstream(numberFile), number)); }, "X server",
            *display);
    setVariable("DISPLAY", ":" + number);
    if (screens == Screens::TwoSideBySide)
        require(
            [&] {
                return run({"python3", SPLIT_SCREEN, socket, std::to_string(width),
                            std::to_string(height)}) == 0;
            },
            "second screen", *display);
}

std::unique_ptr<Process> VirtualScreen::start(const std::string& name,
                                              const std::vector<std::string>& options,
                                              const Process::Environment& changes) {
    std::vector<std::string> arguments{name};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const std::filesystem::path program(name);
    return std::make_unique<Process>(arguments, changes, folder() / program.filename());
}

int VirtualScreen::run(const std::vector<std::string>& arguments, std::string* output) const {
    const TemporaryDirectory temporary;
    Process process(arguments, {}, temporary / "output");
    const int status = process.wait();
    if (output)
        *output = process.output();
    return status;
}

void VirtualScreen::moveTo(QPoint place) const {
    // As a hand does, not in one leap: an X server in a Wayland session adds the last leap to where a press
    // is.
    const std::string row = std::to_string(place.y());
    run({"xdotool", "mousemove", std::to_string(place.x() + 1), row, "mousemove", std::to_string(place.x()),
         row});
}

void VirtualScreen::click(QPoint place, int button) const {
    moveTo(place);
    run({"xdotool", "click", std::to_string(button)});
}

void VirtualScreen::type(const std::string& key) const {
    run({"xdotool", "key", key});
}

QImage VirtualScreen::screen() const {
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> server(xcb_connect(nullptr, nullptr),
                                                                              &xcb_disconnect);
    const xcb_screen_t& all = *xcb_setup_roots_iterator(xcb_get_setup(server.get())).data;
    const auto request = xcb_get_image(server.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, all.root, 0, 0,
                                       all.width_in_pixels, all.height_in_pixels, ~0U);
    const auto shown = x11::owned(xcb_get_image_reply(server.get(), request, nullptr));
    return shown ? QImage(xcb_get_image_data(shown.get()), all.width_in_pixels, all.height_in_pixels,
                          QImage::Format_RGB32)
                       .copy()
                 : QImage();
}

bool VirtualScreen::waitUntil(const std::function<bool()>& condition, std::chrono::seconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

} // namespace velloren
