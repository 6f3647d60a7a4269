#pragma once

#include <QtGlobal>

class QScreen;
class QWindow;
struct wl_display;
struct wl_output;
struct wl_surface;

/// What Qt has no public way for, or had none in its oldest release that this is built with. It may change
/// with every release of Qt: tried with 6.4, 6.8 and 6.11. Main thread only.
namespace velloren::qtprivate {

/// Whether this Qt scales by any factor that a compositor names, and not by whole numbers alone.
inline constexpr bool scalesByFractions = QT_VERSION >= QT_VERSION_CHECK(6, 5, 0);

/// Qt's connection to the compositor. Qt has to be on Wayland.
[[nodiscard]] wl_display* waylandDisplay();

/// The compositor's name for a screen of Qt's; null where it has none.
[[nodiscard]] wl_output* outputOf(QScreen& screen);

/// The surface of a window, which is made if need be.
[[nodiscard]] wl_surface* surfaceOf(QWindow& window);

/// Has Qt ask the window to close as the user's window manager would.
void closeAsUser(QWindow& window);

/// Tells Qt that none of its windows has the keyboard.
void forgetFocus();

} // namespace velloren::qtprivate
