#include "Platform/Desktop/StatusBar.h"

#include "Platform/Desktop/Appearance.h"
#include "Platform/Foundation/SharedInstance.h"

#include <QEvent>
#include <QPainter>

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace velloren {

namespace {

constexpr int outlineShare = 22; // of the side of a picture goes to its outline

/// Fills what is between opaque pixels in its row and in its column as well: the inside of a shape.
void fillInside(QImage& picture, QRgb color) {
    const auto isOpaque = [](QRgb pixel) { return qAlpha(pixel) == 255; };
    std::vector<int> top(std::size_t(picture.width()), picture.height());
    std::vector<int> bottom(std::size_t(picture.width()), -1);
    for (int y = 0; y < picture.height(); ++y) {
        const auto* const line = reinterpret_cast<const QRgb*>(picture.constScanLine(y));
        for (std::size_t x = 0; x < top.size(); ++x) {
            if (isOpaque(line[x])) {
                top[x] = std::min(top[x], y);
                bottom[x] = y;
            }
        }
    }
    for (int y = 0; y < picture.height(); ++y) {
        auto* const line = reinterpret_cast<QRgb*>(picture.scanLine(y));
        const auto right =
            std::find_if(std::reverse_iterator(line + top.size()), std::reverse_iterator(line), isOpaque)
                .base();
        for (auto* pixel = std::find_if(line, right, isOpaque); pixel < right; ++pixel) {
            const auto x = std::size_t(pixel - line);
            if (top[x] < y && y < bottom[x])
                *pixel = color;
        }
    }
}

/// The picture on a copy of its shape, `reach` pixels larger all round and without holes: a rim within would
/// leave nothing of them to see in a small picture.
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
    painter.end();
    fillInside(result, color.rgba());
    painter.begin(&result);
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
    const int smaller = std::min(width(), height());
    QImage image(side, side, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    const double scale = double(side) / smaller;
    painter.scale(scale, scale);
    render(&painter, QPoint((smaller - width()) / 2, (smaller - height()) / 2), QRegion(), DrawChildren);
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
