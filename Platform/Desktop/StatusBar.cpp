#include "Platform/Desktop/StatusBar.h"

#include "Platform/Foundation/SharedInstance.h"
#include "Platform/Views/WindowServer.h"

#include <QEvent>
#include <QPainter>

namespace velloren {

StatusBarButton::StatusBarButton(QSize size) {
    resize(size.expandedTo({1, 1}));
}

void StatusBarButton::press(QPoint position) {
    latestPress = position;
    if (auto* view = qobject_cast<View*>(childAt(rect().center())))
        view->mouseDown({EventType::LeftMouseDown, position});
}

QRect StatusBarButton::rectOnScreen(const QRect& rect) const {
    const auto place = latestPress ? latestPress : WindowServer::shared().pointerLocation();
    if (!place)
        return {};
    QRect onScreen(QPoint(), rect.size());
    onScreen.moveCenter(*place);
    return onScreen;
}

QImage StatusBarButton::picture(int side) {
    const int shown = std::min(width(), height());
    QImage image(side, side, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    const double scale = double(side) / shown;
    painter.scale(scale, scale);
    render(&painter, QPoint((shown - width()) / 2, (shown - height()) / 2), QRegion(), DrawChildren);
    return image;
}

void StatusBarButton::displayNeeded() {
    if (displayPending || !display)
        return;
    displayPending = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            displayPending = false;
            display();
        },
        Qt::QueuedConnection);
}

void StatusBarButton::changeEvent(QEvent* event) {
    View::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        displayNeeded();
}

StatusBar& StatusBar::systemStatusBar() {
    return SharedInstance<StatusBar>::get();
}

} // namespace velloren
