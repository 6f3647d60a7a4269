#include "Platform/Freedesktop/Windowing/Wayland/ScreenOverlay.h"

#include "Platform/Freedesktop/Windowing/OverlayEvents.h"
#include "Platform/Freedesktop/Windowing/QtPrivate.h"

#include <QEnterEvent>
#include <QMouseEvent>
#include <QScreen>

#include <utility>

namespace velloren {

namespace {

/// A window's surface needs its flags first. Never shown as Qt understands it, the window is never drawn on:
/// a picture of the whole screen would be large.
wl_surface& surfaceOver(QScreen& screen, QWindow& window) {
    window.setFlags(Qt::FramelessWindowHint | Qt::BypassWindowManagerHint);
    window.setGeometry(screen.geometry());
    return *qtprivate::surfaceOf(window);
}

} // namespace

ScreenOverlay::ScreenOverlay(const LayerShell& shell, QScreen& screen, OverlayEvents& events,
                             Handlers handlers)
    : QWindow(&screen), shell(shell), events(events), handlers(std::move(handlers)),
      surface(surfaceOver(screen, *this)),
      role(std::make_unique<LayerSurface>(shell, surface, screen, LayerSurface::Bars::Ignore,
                                          LayerSurface::Handlers{[this](QSize size) {
                                                                     shown.reset(); // there may be one only
                                                                     shown = this->shell.showNothing(surface,
                                                                                                     size);
                                                                 },
                                                                 nullptr})) {}

ScreenOverlay::~ScreenOverlay() {
    // The roles have to go before the surface.
    shown.reset();
    role.reset();
}

void ScreenOverlay::leaveOut(const QRegion& places) {
    shell.letThrough(surface, places.translated(-position()));
}

bool ScreenOverlay::event(QEvent* event) {
    switch (event->type()) {
    case QEvent::Enter:
        pointerIsAt(static_cast<QEnterEvent*>(event)->position());
        return true;
    case QEvent::Leave:
        pointerPlace.reset();
        release();
        return true;
    case QEvent::MouseButtonPress:
        press(static_cast<QMouseEvent*>(event)->button(), static_cast<QMouseEvent*>(event)->position());
        return true;
    case QEvent::TouchBegin:
        press(Qt::LeftButton, static_cast<QTouchEvent*>(event)->point(0).position());
        return true;
    case QEvent::MouseButtonRelease:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel:
        release();
        return true;
    default:
        return QWindow::event(event);
    }
}

void ScreenOverlay::press(Qt::MouseButton button, QPointF place) {
    pressUnderWay = true;
    events.handlePress(button, position() + place.toPoint());
}

void ScreenOverlay::release() {
    if (std::exchange(pressUnderWay, false))
        handlers.released();
}

void ScreenOverlay::pointerIsAt(QPointF place) {
    pointerPlace = position() + place.toPoint();
    handlers.pointerKnown();
}

} // namespace velloren
