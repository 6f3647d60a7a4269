#include "Platform/Desktop/StatusBar.h"

#include "Platform/Desktop/Appearance.h"
#include "Platform/Foundation/SharedInstance.h"

#include <QEvent>
#include <QPainter>

#include <utility>

namespace velloren {

namespace {

constexpr int outlineShare = 22; // of the side of a picture goes to its outline

/// The picture on a copy of its shape, `reach` pixels larger all round.
QImage outlined(const QImage& picture, QColor color, int reach) {
    QImage shape = picture;
    QPainter filling(&shape);
    filling.setCompositionMode(QPainter::CompositionMode_SourceIn);
    filling.fillRect(shape.rect(), color);
    filling.end();

    QImage result(picture.size(), picture.format());
    result.fill(Qt::transparent);
    QPainter painter(&result);
    for (int y = -reach; y <= reach; ++y) {
        for (int x = -reach; x <= reach; ++x) {
            if (x * x + y * y <= reach * (reach + 1))
                painter.drawImage(x, y, shape);
        }
    }
    painter.drawImage(0, 0, picture);
    return result;
}

} // namespace

StatusBarButton::StatusBarButton(QSize size) {
    resize(size.expandedTo({1, 1}));
}

void StatusBarButton::press(QPoint position) {
    latestPress = position;
    if (auto* view = qobject_cast<View*>(childAt(rect().center())))
        view->mouseDown({EventType::LeftMouseDown, position});
}

QRect StatusBarButton::rectOnScreen(const QRect& rect) const {
    if (!latestPress)
        return {};
    QRect onScreen(QPoint(), rect.size());
    onScreen.moveCenter(*latestPress);
    return onScreen;
}

QImage StatusBarButton::picture(int side) {
    if (const auto handler = std::exchange(firstShown, nullptr))
        handler();
    const int shown = std::min(width(), height());
    QImage image(side, side, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    const double scale = double(side) / shown;
    painter.scale(scale, scale);
    render(&painter, QPoint((shown - width()) / 2, (shown - height()) / 2), QRegion(), DrawChildren);
    painter.end();
    if (Appearance::isSeen())
        return image;
    const bool isWhite = Appearance::currentName() == Appearance::vibrantDark;
    return outlined(image, isWhite ? Qt::black : Qt::white, std::max(1, side / outlineShare));
}

void StatusBarButton::setSeenAppearance(const std::optional<std::string>& name) {
    if (Appearance::setName(AppearanceSource::Pixels, name))
        setNeedsDisplay();
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

void StatusBarButton::childEvent(QChildEvent* event) {
    View::childEvent(event);
    displayNeeded(); // a host may have asked for the picture before there was anything on it
}

StatusBar& StatusBar::systemStatusBar() {
    return SharedInstance<StatusBar>::get();
}

} // namespace velloren
