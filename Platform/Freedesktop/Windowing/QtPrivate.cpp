#include "Platform/Freedesktop/Windowing/QtPrivate.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWindow>
#include <qpa/qplatformnativeinterface.h>
#include <qpa/qwindowsysteminterface.h>

namespace velloren::qtprivate {

wl_display* waylandDisplay() {
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
    const auto* application = qApp->nativeInterface<QNativeInterface::QWaylandApplication>();
    return application ? application->display() : nullptr;
#else
    return static_cast<wl_display*>(
        QGuiApplication::platformNativeInterface()->nativeResourceForIntegration("wl_display"));
#endif
}

wl_output* outputOf(QScreen& screen) {
#if QT_VERSION >= QT_VERSION_CHECK(6, 7, 0)
    const auto* native = screen.nativeInterface<QNativeInterface::QWaylandScreen>();
    return native ? native->output() : nullptr;
#else
    return static_cast<wl_output*>(
        QGuiApplication::platformNativeInterface()->nativeResourceForScreen("output", &screen));
#endif
}

wl_surface* surfaceOf(QWindow& window) {
    window.create();
    return static_cast<wl_surface*>(
        QGuiApplication::platformNativeInterface()->nativeResourceForWindow("surface", &window));
}

void closeAsUser(QWindow& window) {
    QWindowSystemInterface::handleCloseEvent(&window);
}

void forgetFocus() {
#if QT_VERSION >= QT_VERSION_CHECK(6, 7, 0)
    QWindowSystemInterface::handleFocusWindowChanged(nullptr);
#else
    QWindowSystemInterface::handleWindowActivated(nullptr);
#endif
}

} // namespace velloren::qtprivate
