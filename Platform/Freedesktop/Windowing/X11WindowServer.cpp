#include "Platform/Freedesktop/Windowing/X11WindowServer.h"

#include "Platform/Freedesktop/Windowing/X11Display.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>
#include <QWidget>
#include <xcb/xcb.h>

namespace velloren {

std::optional<QPoint> X11WindowServer::pointerLocation() const {
    return pointer == Pointer::Known && x11::connection() ? std::optional(QCursor::pos()) : std::nullopt;
}

bool X11WindowServer::isComposited() const {
    xcb_connection_t* connection = x11::connection();
    if (!connection)
        return true;
    const auto reply = x11::owned(xcb_get_selection_owner_reply(
        connection, xcb_get_selection_owner(connection, x11::atomNamed("_NET_WM_CM_S0")), nullptr));
    return reply && reply->owner != XCB_WINDOW_NONE;
}

void X11WindowServer::preparePopover(QWidget& window) {
    window.setAttribute(Qt::WA_X11NetWmWindowTypePopupMenu);
}

void X11WindowServer::findSite(QWidget&, const QRect& anchor, SiteHandler found) {
    const QScreen* screen = QGuiApplication::screenAt(anchor.center());
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    const QRect available = screen->availableGeometry();
    found({anchor.isEmpty() ? QRect(available.topRight(), QSize(1, 1)) : anchor, screen->geometry(),
           available});
}

void X11WindowServer::showPopover(QWidget& window, const QRect& frame) {
    window.setGeometry(frame);
    if (xcb_connection_t* connection = x11::connection(); connection && !window.isVisible()) {
        // Window managers read it when the window comes.
        constexpr std::uint32_t everyWorkspace = 0xffffffff;
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, xcb_window_t(window.winId()),
                            x11::atomNamed("_NET_WM_DESKTOP"), XCB_ATOM_CARDINAL, 32, 1, &everyWorkspace);
    }
    window.show();
}

void X11WindowServer::hidePopover(QWidget& window) {
    window.hide();
}

} // namespace velloren
