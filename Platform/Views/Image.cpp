#include "Platform/Views/Image.h"

#include <QHash>
#include <QPainter>

#include <cmath>

namespace velloren {

namespace {

QString resourcePath(const QString& name, int scale) {
    const QString suffix = scale == 1 ? QString() : QStringLiteral("@%1x").arg(scale);
    return QStringLiteral(":/images/%1%2.png").arg(name, suffix);
}

} // namespace

std::optional<Image> Image::named(const QString& name) {
    static QHash<QString, std::shared_ptr<const Bitmaps>> loaded;
    if (const auto known = loaded.constFind(name); known != loaded.constEnd())
        return Image(name, *known);

    auto bitmaps = std::make_shared<Bitmaps>();
    for (const int scale : {1, 2, 3}) {
        QImage bitmap(resourcePath(name, scale));
        if (bitmap.isNull())
            continue;
        // Qt applies an "@2x" by itself when it reads the file; sizes here are always in pixels.
        bitmap.setDevicePixelRatio(1);
        bitmaps->emplace(scale, bitmap.convertToFormat(QImage::Format_ARGB32_Premultiplied));
    }
    if (bitmaps->empty())
        return std::nullopt;
    loaded.insert(name, bitmaps);
    return Image(name, bitmaps);
}

QSizeF Image::size() const {
    const auto& [scale, bitmap] = *bitmaps->begin();
    return QSizeF(bitmap.size()) / scale;
}

double Image::recommendedLayerContentsScale(double preferred) const {
    const auto suitable = bitmaps->lower_bound(preferred);
    return suitable != bitmaps->end() ? suitable->first : bitmaps->rbegin()->first;
}

void Image::draw(QPainter& painter, const QRectF& rect) const {
    const QTransform transform = painter.deviceTransform();
    const double pixelsPerPoint = std::hypot(transform.m11(), transform.m12());
    const double scale = recommendedLayerContentsScale(pixelsPerPoint * rect.width() / size().width());
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(rect, bitmaps->at(scale));
    painter.restore();
}

void Image::drawInMiddle(QPainter& painter, const QRectF& rect) const {
    QRectF place({}, size());
    place.moveCenter(rect.center());
    draw(painter, place);
}

} // namespace velloren
