#include "Platform/Freedesktop/Windowing/PlainWindowServer.h"

#include "Platform/Foundation/CurrentLocale.h"
#include "Platform/Freedesktop/Windowing/QtPrivate.h"
#include "Platform/Freedesktop/Windowing/ScreenPixels.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>
#include <QWindow>

namespace velloren {

namespace {

/// Where status icons are on most desktops.
PopoverSite siteInCorner() {
    const QScreen& screen = *QGuiApplication::primaryScreen();
    const QRect available = pixels::availableOn(screen);
    const QPoint endOfBar = CurrentLocale::runsRightToLeft() ? available.topLeft() : available.topRight();
    return {QRect(endOfBar, QSize(1, 1)), screen.geometry(), available, PopoverSite::Anchor::Nearby};
}

PopoverSite siteAtNumber(QRect anchor) {
    const QPoint number = anchor.center();
    const QPoint inScreensPixels = pixels::toDeviceIndependent(number, pixels::screenAt(number));
    const auto isInBar = [](QPoint place) {
        const QScreen* screen = QGuiApplication::screenAt(place);
        return screen && !pixels::availableOn(*screen).contains(place);
    };
    anchor.moveCenter(!isInBar(inScreensPixels) && isInBar(number) ? number : inScreensPixels);
    const QScreen& screen = pixels::screenAtDeviceIndependent(anchor.center());
    return {anchor, screen.geometry(), pixels::availableOn(screen)};
}

} // namespace

void PlainWindowServer::findSite(QWidget&, const QRect& anchor, SiteHandler found) {
    found(anchor.isEmpty() ? siteInCorner() : siteAtNumber(anchor));
}

void PlainWindowServer::showPopover(QWidget& window, const QRect& frame) {
    window.setGeometry(frame);
    if (window.isVisible())
        return;
    window.show();
    // Qt puts off what this makes of each widget in it to after the first painting, and would paint it again.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::UpdateLater);
}

bool PlainWindowServer::hidePopover(QWidget& window) {
    window.hide();
    // Else Qt takes it for active until the display tells otherwise: shown again before that, it would have
    // the keyboard and not show it.
    if (QGuiApplication::focusWindow() == window.windowHandle())
        qtprivate::forgetFocus();
    return false;
}

} // namespace velloren
