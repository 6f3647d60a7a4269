#include "Platform/Views/PopoverSurroundings.h"

#include "Platform/Views/PopoverPlacement.h"

#include <QImage>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace velloren {

namespace {

constexpr double radius = PopoverMetrics::cornerRadius;
constexpr int lightOffset = 2; // the light comes from above
constexpr double darkest = 44;
constexpr double rimDarkness = 46;

/// How far a place lies outside of the bubble, in points, negative inside; `across` is its distance from the
/// bubble's nearer side and `down` its distance from the top of a bubble of that height.
double distance(double across, double down, double height) {
    const double beyondStraightAcross = std::max(radius - across, 0.0);
    const double beyondStraightDown = std::max({radius - down, down - (height - radius), 0.0});
    return std::hypot(beyondStraightAcross, beyondStraightDown) - radius;
}

/// A pixel of black, darkened by what the shadow and the rim leave there.
QRgb blackAt(double shadowDistance, double rimDistance) {
    const double left = std::clamp(1 - shadowDistance / popoverShadowMargin, 0.0, 1.0);
    const double rim = std::clamp(1.5 - rimDistance, 0.0, 1.0) * rimDarkness;
    return qRgba(0, 0, 0, int(std::lround(std::min(255.0, darkest * left * left * left + rim))));
}

/// One picture and one unscaled drawing of it: translucent fills and scaled pictures of this height would go
/// to Qt's pool of threads. The picture reaches `popoverShadowMargin` and the offset beyond the bubble.
QImage surroundingsOf(QSize bubble, double pixelsPerPoint) {
    const QSizeF size = bubble + QSize(2 * popoverShadowMargin, 2 * popoverShadowMargin + lightOffset);
    QImage image((size * pixelsPerPoint).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(pixelsPerPoint);
    const int corner = int(std::ceil((popoverShadowMargin + radius) * pixelsPerPoint));
    // Between them all rows are alike.
    const int ends = int(std::ceil((popoverShadowMargin + lightOffset + radius) * pixelsPerPoint));
    for (int y = 0; y < image.height(); ++y) {
        auto* const line = reinterpret_cast<QRgb*>(image.scanLine(y));
        if (y > ends && y < image.height() - ends) {
            std::copy_n(line - image.width(), image.width(), line);
            continue;
        }
        const double top = (y + 0.5) / pixelsPerPoint - popoverShadowMargin;
        const auto pixelAt = [&](double across) {
            return blackAt(distance(across, top - lightOffset, bubble.height()),
                           distance(across, top, bubble.height()));
        };
        std::fill(line + corner, line + image.width() - corner, pixelAt(radius));
        for (int x = 0; x < corner; ++x)
            line[x] = line[image.width() - 1 - x] = pixelAt((x + 0.5) / pixelsPerPoint - popoverShadowMargin);
    }
    return image;
}

} // namespace

void drawPopoverSurroundings(QPainter& painter, const QRect& bubble) {
    painter.drawImage(bubble.topLeft() - QPoint(popoverShadowMargin, popoverShadowMargin),
                      surroundingsOf(bubble.size(), painter.device()->devicePixelRatioF()));
}

} // namespace velloren
