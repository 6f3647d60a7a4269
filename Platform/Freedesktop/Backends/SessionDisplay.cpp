#include "Platform/Freedesktop/Backends/SessionDisplay.h"

#include "Platform/Freedesktop/Windowing/Wayland/LayerShellProbe.h"
#include "Platform/Freedesktop/Windowing/X11/X11Display.h"

#include <QGuiApplication>

namespace velloren {

namespace {

constexpr auto platformVariable = "QT_QPA_PLATFORM";
// Has Qt keep in mind where on the desktop a window is, and its menus with it, once it was placed.
constexpr auto positionsVariable = "QT_WAYLAND_DISABLE_FIXED_POSITIONS";

bool isOnWayland(SessionDisplay display) {
    return display == SessionDisplay::LayerShell || display == SessionDisplay::Other;
}

} // namespace

std::optional<SessionDisplay> displayOfSession() {
    const QByteArray usersPlatform = qgetenv(platformVariable);
    const bool mayUseWayland =
        x11::isWithinWayland() && (usersPlatform.isEmpty() || usersPlatform.startsWith("wayland"));
    if (mayUseWayland && compositorHasLayerShell())
        return SessionDisplay::LayerShell;
    if (mayUseWayland && (!usersPlatform.isEmpty() || !qEnvironmentVariableIsSet("DISPLAY")))
        return SessionDisplay::Other;
    if (!qEnvironmentVariableIsSet("DISPLAY") && usersPlatform.isEmpty())
        return std::nullopt;
    return x11::isWithinWayland() ? SessionDisplay::XWayland : SessionDisplay::X11;
}

DisplayChoice::DisplayChoice(SessionDisplay display)
    : display(display), usersPlatform(qgetenv(platformVariable)) {
    if (display == SessionDisplay::LayerShell)
        qputenv(positionsVariable, "1");
    if (usersPlatform.isEmpty())
        qputenv(platformVariable, isOnWayland(display) ? "wayland;xcb" : "xcb;wayland");
}

DisplayChoice::~DisplayChoice() {
    qunsetenv(positionsVariable);
    if (usersPlatform.isEmpty())
        qunsetenv(platformVariable);
}

SessionDisplay DisplayChoice::made() const {
    if (x11::connection())
        return isOnWayland(display) ? SessionDisplay::XWayland : display;
    return isOnWayland(display) ? display : SessionDisplay::Other;
}

} // namespace velloren
