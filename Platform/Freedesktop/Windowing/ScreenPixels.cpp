#include "Platform/Freedesktop/Windowing/ScreenPixels.h"

#include <QGuiApplication>
#include <QScreen>

namespace velloren::pixels {

const QScreen& screenAt(QPoint place) {
    for (const QScreen* screen : QGuiApplication::screens()) {
        if (fromDeviceIndependent(screen->geometry(), *screen).contains(place))
            return *screen;
    }
    return *QGuiApplication::primaryScreen();
}

const QScreen& screenAtDeviceIndependent(QPoint place) {
    const QScreen* screen = QGuiApplication::screenAt(place);
    return screen ? *screen : *QGuiApplication::primaryScreen();
}

QRect availableOn(const QScreen& screen) {
    const QRect available = screen.availableGeometry();
    return available.isEmpty() ? screen.geometry() : available;
}

QPoint toDeviceIndependent(QPoint place, const QScreen& screen) {
    const QPoint origin = screen.geometry().topLeft();
    return origin + ((place - origin).toPointF() / screen.devicePixelRatio()).toPoint();
}

QRect toDeviceIndependent(const QRect& rect, const QScreen& screen) {
    const QPoint origin = screen.geometry().topLeft();
    const QRectF fromOrigin = rect.translated(-origin);
    const double ratio = screen.devicePixelRatio();
    return QRectF(fromOrigin.topLeft() / ratio, fromOrigin.size() / ratio).toAlignedRect().translated(origin);
}

QPoint fromDeviceIndependent(QPoint place, const QScreen& screen) {
    const QPoint origin = screen.geometry().topLeft();
    return origin + ((place - origin + QPointF(0.5, 0.5)) * screen.devicePixelRatio()).toPoint();
}

QRect fromDeviceIndependent(const QRect& rect, const QScreen& screen) {
    const QPoint origin = screen.geometry().topLeft();
    const QRectF fromOrigin = rect.translated(-origin);
    const double ratio = screen.devicePixelRatio();
    return QRectF(fromOrigin.topLeft() * ratio, fromOrigin.size() * ratio).toRect().translated(origin);
}

} // namespace velloren::pixels
