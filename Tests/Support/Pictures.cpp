#include "Tests/Support/Pictures.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace velloren {

namespace {

double linear(double channel) {
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

} // namespace

std::optional<QRect> boundsWithin(QRect area, const std::function<bool(QPoint)>& wanted) {
    QRect bounds;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            if (wanted({x, y}))
                bounds |= QRect(x, y, 1, 1);
        }
    }
    return bounds.isNull() ? std::nullopt : std::optional(bounds);
}

std::optional<QRect> difference(const QImage& before, const QImage& after, QRect area) {
    return boundsWithin(area & before.rect() & after.rect(),
                        [&](QPoint at) { return before.pixel(at) != after.pixel(at); });
}

double luminance(QColor color) {
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

QColor commonColor(const QImage& picture) {
    std::map<QRgb, int> counts;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            ++counts[picture.pixel(x, y)];
    }
    const auto most = std::ranges::max_element(counts, {}, [](const auto& each) { return each.second; });
    return most == counts.end() ? QColor() : QColor(most->first);
}

double greatestContrast(const QImage& picture) {
    const double background = luminance(commonColor(picture));
    double greatest = 1;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const double ratio = (luminance(picture.pixelColor(x, y)) + 0.05) / (background + 0.05);
            greatest = std::max({greatest, ratio, 1 / ratio});
        }
    }
    return greatest;
}

bool isHighlight(QColor color) {
    return color.blue() > 200 && color.red() < 100;
}

} // namespace velloren
