#include "Tests/Support/SwayDesktop.h"

#include <QColor>

#include <fstream>
#include <unistd.h>

namespace velloren {

namespace {

namespace fs = std::filesystem;

constexpr uid_t nobody = 65534;
constexpr QRgb popoverGrey = qRgb(236, 236, 236);
constexpr QRgb barGreen = qRgb(0, 160, 0);

enum class Colored { Like, Unlike };

/// Where the picture has that colour, or any other one; none where nothing has.
std::optional<QRect> boundsOf(const QImage& picture, QRgb color, Colored colored) {
    QRect bounds;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if ((picture.pixel(x, y) == color) == (colored == Colored::Like))
                bounds |= QRect(x, y, 1, 1);
        }
    }
    return bounds.isNull() ? std::nullopt : std::optional(bounds);
}

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
    const auto barArea = boundsOf(picture, barGreen, Colored::Like);
    if (!barArea)
        return std::nullopt;
    const auto inBar = boundsOf(picture.copy(*barArea), barGreen, Colored::Unlike);
    return inBar ? std::optional(inBar->translated(barArea->topLeft())) : std::nullopt;
}

std::optional<QRect> SwayDesktop::popover() const {
    const auto found = boundsOf(screen(), popoverGrey, Colored::Like);
    return found && found->width() > 300 ? found : std::nullopt;
}

} // namespace velloren
