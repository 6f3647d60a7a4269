#include "Platform/Views/BandedFill.h"

#include <QPainter>
#include <QPainterPath>

namespace velloren {

namespace {

constexpr int bandHeight = 3;

void fillBand(QPainter& painter, const QPainterPath& path, const QRect& band, const QColor& color) {
    // Within the path it needs no path, and where it is opaque nobody's help. The path's own edges do not
    // count as crossing it.
    if (color.alpha() == 255 && path.contains(QRectF(band).adjusted(0.5, 0.5, -0.5, -0.5))) {
        painter.fillRect(band, color);
    } else if (band.height() > bandHeight) {
        const int half = band.height() / 2;
        fillBand(painter, path, band.adjusted(0, 0, 0, half - band.height()), color);
        fillBand(painter, path, band.adjusted(0, half, 0, 0), color);
    } else {
        painter.save();
        painter.setClipRect(band);
        painter.fillPath(path, color);
        painter.restore();
    }
}

} // namespace

void fillInBands(QPainter& painter, const QPainterPath& path, const QColor& color) {
    fillBand(painter, path, path.boundingRect().toAlignedRect(), color);
}

} // namespace velloren
