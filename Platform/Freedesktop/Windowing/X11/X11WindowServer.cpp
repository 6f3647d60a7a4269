#include "Platform/Freedesktop/Windowing/X11/X11WindowServer.h"

#include "Platform/Freedesktop/Windowing/ScreenPixels.h"
#include "Platform/Freedesktop/Windowing/X11/PopoverFocus.h"
#include "Platform/Freedesktop/Windowing/X11/X11Bars.h"
#include "Platform/Freedesktop/Windowing/X11/X11Display.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>
#include <QWindow>
#include <xcb/xcb.h>
#include <xcb/xfixes.h>

#include <algorithm>
#include <utility>

namespace velloren {

namespace {

constexpr auto compositorSelection = "_NET_WM_CM_S0";

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
    const QRect available = pixels::availableOn(screen);
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
    return {QRect(pointer, QSize(1, 1)), screen.geometry(), pixels::availableOn(screen),
            PopoverSite::Anchor::Nearby};
}

} // namespace

X11WindowServer::X11WindowServer() {
    // Qt has asked for the events of this selection already.
    const auto* extension = xcb_get_extension_data(x11::connection(), &xcb_xfixes_id);
    if (!extension || !extension->present)
        return;
    selectionNotify = std::uint8_t(extension->first_event + XCB_XFIXES_SELECTION_NOTIFY);
    qApp->installNativeEventFilter(this);
}

X11WindowServer::~X11WindowServer() = default;

std::optional<QPoint> X11WindowServer::pointerLocation() const {
    return QCursor::pos();
}

bool X11WindowServer::isComposited() const {
    xcb_connection_t* connection = x11::connection();
    const auto reply = x11::owned(xcb_get_selection_owner_reply(
        connection, xcb_get_selection_owner(connection, x11::atomNamed(compositorSelection)), nullptr));
    return reply && reply->owner != XCB_WINDOW_NONE;
}

void X11WindowServer::preparePopover(QWidget& window, ChangeHandler changed) {
    window.setWindowFlag(Qt::BypassWindowManagerHint);
    declareShadow(window);
    focus = new PopoverFocus(*window.windowHandle());
    compositingChanged = std::move(changed);
}

void X11WindowServer::setAnimates(QWidget& window, bool animates) {
    x11::setAnimates(window, animates);
}

void X11WindowServer::declareShadow(QWidget& window) {
    x11::leaveOutShadow(window);
}

void X11WindowServer::findSite(QWidget&, const QRect& anchor, SiteHandler found) {
    found(anchor.isEmpty() ? siteNearby(QCursor::pos())
                           : siteAt(anchor, pixels::screenAtDeviceIndependent(anchor.center())));
}

void X11WindowServer::showPopover(QWidget& window, const QRect& frame) {
    popover = &window;
    const bool moves = window.isVisible();
    PlainWindowServer::showPopover(window, frame);
    if (!moves && focus)
        focus->take();
}

bool X11WindowServer::hidePopover(QWidget& window) {
    popover = nullptr;
    static_cast<void>(PlainWindowServer::hidePopover(window));
    return true;
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
