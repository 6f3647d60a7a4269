#include "Platform/Views/BandedFill.h"

#include <QImage>
#include <QPainter>
#include <QPainterPath>

namespace velloren {

namespace {

constexpr int bandHeight = 3;

/// By way of a picture of the band's size: a rasterizer goes through all lines of what it draws on.
void drawBand(QPainter& painter, const QPainterPath& path, const QRect& band, const QColor& color) {
    QImage picture(band.size(), QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    QPainter inPicture(&picture);
    inPicture.setRenderHints(painter.renderHints());
    inPicture.translate(-band.topLeft());
    inPicture.fillPath(path, color);
    inPicture.end();
    painter.drawImage(band.topLeft(), picture);
}

/// `path` and `band` are in the device's pixels, as the painter's coordinates are here.
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
        drawBand(painter, path, band, color);
    }
}

} // namespace

void fillInBands(QPainter& painter, const QPainterPath& path, const QColor& color) {
    const QTransform toDevice = painter.deviceTransform();
    const QPainterPath onDevice = toDevice.map(path);
    const QRect all = onDevice.boundingRect().toAlignedRect();
    if (all.isEmpty())
        return;
    painter.save();
    painter.setTransform(toDevice.inverted(), true);
    fillBand(painter, onDevice, all, color);
    painter.restore();
}

} // namespace velloren
