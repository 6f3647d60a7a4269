#include "Platform/Freedesktop/Windowing/X11/X11WindowServer.h"

#include "Platform/Foundation/CurrentLocale.h"
#include "Platform/Freedesktop/Windowing/X11/PopoverFocus.h"
#include "Platform/Freedesktop/Windowing/QtPrivate.h"
#include "Platform/Freedesktop/Windowing/ScreenPixels.h"
#include "Platform/Freedesktop/Windowing/X11/X11Bars.h"
#include "Platform/Freedesktop/Windowing/X11/X11Display.h"
#include "Platform/Freedesktop/Windowing/X11/XPressCatcher.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>
#include <QWindow>
#include <xcb/xcb.h>
#include <xcb/xfixes.h>

#include <algorithm>
#include <array>
#include <utility>

namespace velloren {

namespace {

constexpr auto compositorSelection = "_NET_WM_CM_S0";

/// What the desktop keeps free on the screen; all of it where a bar on an inner edge leaves nothing.
QRect availableOn(const QScreen& screen) {
    const QRect available = screen.availableGeometry();
    return available.isEmpty() ? screen.geometry() : available;
}

/// The strip of the screen beside its available area that `place` lies in; empty where it lies in none.
QRect stripAround(QPoint place, const QRect& screen, const QRect& available) {
    if (place.y() < available.top())
        return {screen.topLeft(), QPoint(screen.right(), available.top() - 1)};
    if (place.y() > available.bottom())
        return {QPoint(screen.left(), available.bottom() + 1), screen.bottomRight()};
    if (place.x() < available.left())
        return {screen.topLeft(), QPoint(available.left() - 1, screen.bottom())};
    if (place.x() > available.right())
        return {QPoint(available.right() + 1, screen.top()), screen.bottomRight()};
    return {};
}

/// Which way the bar runs. One in a corner may be as small as its icon: most of those are at the top or the
/// bottom.
Qt::Orientation orientationOf(const QRect& bar, const QRect& screen) {
    const bool atSide = bar.left() <= screen.left() || bar.right() >= screen.right();
    const bool atEnd = bar.top() <= screen.top() || bar.bottom() >= screen.bottom();
    const int timesAsHigh = atSide && atEnd ? 2 : 1;
    return bar.height() > timesAsHigh * bar.width() ? Qt::Vertical : Qt::Horizontal;
}

/// `area` without the side of it that `bar` covers.
QRect without(const QRect& bar, Qt::Orientation runs, QRect area) {
    const QPoint fromCentre = bar.center() - area.center();
    if (runs == Qt::Horizontal && fromCentre.y() < 0)
        area.setTop(std::max(area.top(), bar.bottom() + 1));
    else if (runs == Qt::Horizontal)
        area.setBottom(std::min(area.bottom(), bar.top() - 1));
    else if (fromCentre.x() < 0)
        area.setLeft(std::max(area.left(), bar.right() + 1));
    else
        area.setRight(std::min(area.right(), bar.left() - 1));
    return area;
}

QRect spanning(const QRect& bar, Qt::Orientation runs, const QRect& anchor) {
    return runs == Qt::Horizontal ? QRect(anchor.x(), bar.y(), anchor.width(), bar.height())
                                  : QRect(bar.x(), anchor.y(), bar.width(), anchor.height());
}

PopoverSite siteAt(const QRect& anchor, const QScreen& screen) {
    const QRect whole = screen.geometry();
    const QRect available = availableOn(screen);
    const QPoint place = pixels::fromDeviceIndependent(anchor.center(), screen);
    const QRect window = x11::barAt(place);
    const QRect bar = window.isEmpty() ? stripAround(anchor.center(), whole, available)
                                       : pixels::toDeviceIndependent(window, screen) & whole;
    if (bar.isEmpty())
        return {anchor, whole, available};
    const Qt::Orientation runs = orientationOf(bar, whole);
    const auto drawn =
        x11::drawnAround(window.isEmpty() ? pixels::fromDeviceIndependent(bar, screen) : window, runs, place);
    return {drawn ? pixels::toDeviceIndependent(*drawn, screen) & whole : spanning(bar, runs, anchor), whole,
            without(bar, runs, available)};
}

PopoverSite siteNearby(QPoint pointer) {
    const QScreen& screen = pixels::screenAtDeviceIndependent(pointer);
    return {QRect(pointer, QSize(1, 1)), screen.geometry(), availableOn(screen), PopoverSite::Anchor::Nearby};
}

/// Where status icons are on most desktops.
PopoverSite siteInCorner() {
    const QScreen& screen = *QGuiApplication::primaryScreen();
    const QRect available = availableOn(screen);
    const QPoint endOfBar = CurrentLocale::runsRightToLeft() ? available.topLeft() : available.topRight();
    return {QRect(endOfBar, QSize(1, 1)), screen.geometry(), available, PopoverSite::Anchor::Nearby};
}

/// At what a host named: of two places it may mean, the one in a bar.
PopoverSite siteAtNumber(QRect anchor) {
    const QPoint number = anchor.center();
    const QPoint inScreensPixels = pixels::toDeviceIndependent(number, pixels::screenAt(number));
    const auto isInBar = [](QPoint place) {
        const QScreen* screen = QGuiApplication::screenAt(place);
        return screen && !availableOn(*screen).contains(place);
    };
    anchor.moveCenter(!isInBar(inScreensPixels) && isInBar(number) ? number : inScreensPixels);
    const QScreen& screen = pixels::screenAtDeviceIndependent(anchor.center());
    return {anchor, screen.geometry(), availableOn(screen)};
}

} // namespace

X11WindowServer::X11WindowServer(Session session) : session(session) {
    if (!x11::connection())
        return;
    // Qt has asked for the events of this selection already.
    const auto* extension = xcb_get_extension_data(x11::connection(), &xcb_xfixes_id);
    if (!extension || !extension->present)
        return;
    selectionNotify = std::uint8_t(extension->first_event + XCB_XFIXES_SELECTION_NOTIFY);
    qApp->installNativeEventFilter(this);
}

X11WindowServer::~X11WindowServer() = default;

std::optional<QPoint> X11WindowServer::pointerLocation() const {
    return session == Session::X11 && x11::connection() ? std::optional(QCursor::pos()) : std::nullopt;
}

bool X11WindowServer::isComposited() const {
    xcb_connection_t* connection = x11::connection();
    if (!connection)
        return true;
    const auto reply = x11::owned(xcb_get_selection_owner_reply(
        connection, xcb_get_selection_owner(connection, x11::atomNamed(compositorSelection)), nullptr));
    return reply && reply->owner != XCB_WINDOW_NONE;
}

void X11WindowServer::preparePopover(QWidget& window, ChangeHandler changed) {
    if (!x11::connection())
        return;
    if (session == Session::X11)
        window.setWindowFlag(Qt::BypassWindowManagerHint);
    declareShadow(window);
    if (session == Session::X11)
        focus = new PopoverFocus(*window.windowHandle());
    compositingChanged = std::move(changed);
}

void X11WindowServer::setAnimates(QWidget& window, bool animates) {
    if (!x11::connection())
        return;
    const std::uint32_t skips = animates ? 0 : 1;
    xcb_change_property(x11::connection(), XCB_PROP_MODE_REPLACE, xcb_window_t(window.winId()),
                        x11::atomNamed("_KDE_NET_WM_SKIP_CLOSE_ANIMATION"), XCB_ATOM_CARDINAL, 32, 1, &skips);
}

void X11WindowServer::declareShadow(QWidget& window) {
    if (!x11::connection())
        return;
    constexpr std::array<std::uint32_t, 4> someOnEachSide{1, 1, 1, 1};
    xcb_change_property(x11::connection(), XCB_PROP_MODE_REPLACE, xcb_window_t(window.winId()),
                        x11::atomNamed("_GTK_FRAME_EXTENTS"), XCB_ATOM_CARDINAL, 32, someOnEachSide.size(),
                        someOnEachSide.data());
}

void X11WindowServer::findSite(QWidget&, const QRect& anchor, SiteHandler found) {
    const auto pointer = pointerLocation();
    if (anchor.isEmpty())
        found(pointer ? siteNearby(*pointer) : siteInCorner());
    else if (pointer)
        found(siteAt(anchor, pixels::screenAtDeviceIndependent(anchor.center())));
    else
        found(siteAtNumber(anchor));
}

void X11WindowServer::showPopover(QWidget& window, const QRect& frame) {
    popover = &window;
    window.setGeometry(frame);
    if (window.isVisible())
        return;
    window.show();
    // Qt puts off what this makes of each widget in it to after the first painting, and would paint it again.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::UpdateLater);
    if (!x11::connection())
        return;
    if (session == Session::Wayland) {
        catcher = std::make_unique<XPressCatcher>(window, [this](Qt::MouseButton button, QPoint place) {
            if (pressed)
                pressed(button, place);
        });
        return;
    }
    if (focus)
        focus->take();
}

bool X11WindowServer::hidePopover(QWidget& window) {
    popover = nullptr;
    catcher.reset();
    window.hide();
    // Else Qt takes it for active until the display tells otherwise: shown again before that, it would have
    // the keyboard and not show it.
    if (QGuiApplication::focusWindow() == window.windowHandle())
        qtprivate::forgetFocus();
    return session == Session::X11; // elsewhere it is a window manager's, with a place and a history
}

bool X11WindowServer::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
    if (!popover || eventType != "xcb_generic_event_t")
        return false;
    const auto* event = static_cast<const xcb_xfixes_selection_notify_event_t*>(message);
    if ((event->response_type & 0x7f) == selectionNotify &&
        event->selection == x11::atomNamed(compositorSelection))
        QMetaObject::invokeMethod(popover, compositingChanged, Qt::QueuedConnection);
    return false;
}

} // namespace velloren
