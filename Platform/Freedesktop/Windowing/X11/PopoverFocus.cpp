#include "Platform/Freedesktop/Windowing/X11/PopoverFocus.h"

#include "Platform/Freedesktop/Windowing/X11/X11Display.h"

#include <QEvent>
#include <QWindow>
#include <xcb/xcb.h>

namespace velloren {

namespace {

// Some window managers lay the focus aside on its way from one window to the next.
constexpr std::chrono::milliseconds way{200};
constexpr int attemptsPerShowing = 10; // one may insist

/// Whether nobody types into that window: it is none, the screen itself, or beyond the screen, like those
/// where window managers lay the focus aside.
bool isNobodys(xcb_window_t focused) {
    const xcb_screen_t& screen = x11::screen();
    if (focused == XCB_INPUT_FOCUS_NONE || focused == XCB_INPUT_FOCUS_POINTER_ROOT || focused == screen.root)
        return true;
    xcb_connection_t* const connection = x11::connection();
    const auto sizeRequest = xcb_get_geometry(connection, focused);
    const auto placeRequest = xcb_translate_coordinates(connection, focused, screen.root, 0, 0);
    const auto size = x11::owned(xcb_get_geometry_reply(connection, sizeRequest, nullptr));
    const auto place = x11::owned(xcb_translate_coordinates_reply(connection, placeRequest, nullptr));
    return size && place &&
           !QRect(place->dst_x, place->dst_y, size->width, size->height)
                .intersects({0, 0, screen.width_in_pixels, screen.height_in_pixels});
}

} // namespace

PopoverFocus::PopoverFocus(QWindow& window) : QObject(&window), window(window) {
    window.installEventFilter(this);
    settled.setSingleShot(true);
    settled.setInterval(way);
    connect(&settled, &QTimer::timeout, this, &PopoverFocus::takeFromNobody);
}

void PopoverFocus::take() {
    attemptsLeft = attemptsPerShowing;
    request();
}

void PopoverFocus::request() {
    // Qt would say a time before the click that is meant.
    xcb_set_input_focus(x11::connection(), XCB_INPUT_FOCUS_PARENT, xcb_window_t(window.winId()),
                        XCB_CURRENT_TIME);
    xcb_flush(x11::connection());
}

void PopoverFocus::takeFromNobody() {
    if (!window.isVisible() || attemptsLeft == 0)
        return;
    const auto focus = x11::owned(
        xcb_get_input_focus_reply(x11::connection(), xcb_get_input_focus(x11::connection()), nullptr));
    if (!focus || !isNobodys(focus->focus))
        return;
    --attemptsLeft;
    request();
}

bool PopoverFocus::eventFilter(QObject*, QEvent* event) {
    if (event->type() == QEvent::MouseButtonPress)
        window.requestActivate();
    else if (event->type() == QEvent::FocusOut && window.isVisible())
        settled.start();
    return false;
}

} // namespace velloren
