#include "Tests/Support/SwayDesktop.h"

#include <fstream>
#include <unistd.h>

namespace velloren {

namespace {

namespace fs = std::filesystem;

constexpr uid_t nobody = 65534;
constexpr QRgb barGreen = qRgb(0, 160, 0);

} // namespace

SwayDesktop::SwayDesktop(const SwayOptions& options) {
    startCompositor(options.configuration);
    startBar(options.barSide);
}

SwayDesktop::~SwayDesktop() {
    bar.reset();
    compositor.reset();
}

void SwayDesktop::startCompositor(const std::string& configuration) {
    const fs::path runtime = home / "sway";
    const fs::path file = runtime / "config";
    fs::create_directories(runtime);
    std::ofstream(file) << "output X11-1 resolution " << width << "x" << height
                        << " background #336699 solid_color\nxwayland disable\ndefault_border none\n"
                        << configuration << "\n";
    std::vector<std::string> command{"sway", "-c", file};
    if (geteuid() == 0) {
        // It refuses to run as root.
        fs::permissions(home.path(), fs::perms::others_exec, fs::perm_options::add);
        (void)chown(runtime.c_str(), nobody, nobody);
        command.insert(command.begin(), {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"});
    }
    fs::permissions(runtime, fs::perms::owner_all);
    compositor = std::make_unique<Process>(command,
                                           Process::Environment{{"HOME", runtime},
                                                                {"XDG_RUNTIME_DIR", runtime},
                                                                {"DBUS_SESSION_BUS_ADDRESS", ""},
                                                                {"WLR_BACKENDS", "x11"},
                                                                {"WLR_RENDERER", "pixman"}},
                                           folder() / "sway");
    const fs::path socket = runtime / "wayland-1";
    require([&] { return fs::exists(socket); }, "compositor", *compositor);
    setVariable("WAYLAND_DISPLAY", socket);
}

void SwayDesktop::startBar(const std::string& side) {
    const fs::path file = folder() / "waybar.json";
    const fs::path style = folder() / "waybar.css";
    const bool upright = side == "left" || side == "right";
    std::ofstream(file) << R"({"layer": "top", "position": ")" << side << R"(", ")"
                        << (upright ? "width" : "height") << R"(": )" << barThickness
                        << R"(, "modules-center": ["tray"], "tray": {"icon-size": 22}})";
    std::ofstream(style) << "window { background: #00a000; min-height: 0; min-width: 0; }";
    bar = start("waybar", {"-c", file, "-s", style});
}

std::optional<QRect> SwayDesktop::icon() const {
    const QImage picture = screen();
    const auto bar = boundsOf(picture, [](QRgb color) { return color == barGreen; });
    if (!bar)
        return std::nullopt;
    const auto inBar = boundsOf(picture.copy(*bar), [](QRgb color) { return color != barGreen; });
    return inBar ? std::optional(inBar->translated(bar->topLeft())) : std::nullopt;
}

std::optional<QRect> SwayDesktop::popover() const {
    const auto found = boundsOf(screen(), [](QRgb color) { return color == qRgb(236, 236, 236); });
    return found && found->width() > 300 ? found : std::nullopt;
}

} // namespace velloren
