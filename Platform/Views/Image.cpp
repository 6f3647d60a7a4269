#include "Platform/Views/Image.h"

#include <QDir>
#include <QHash>
#include <QPainter>

#include <cmath>

namespace velloren {

namespace {

/// The scale of the bitmap whose file's name ends so after the picture's name; none where it is no such end.
std::optional<double> scaleOf(QStringView end, int widthInPoints) {
    const bool isWidth = end.endsWith(u"px.png");
    if (!end.startsWith(u'@') || !end.endsWith(u"x.png"))
        return std::nullopt;
    bool isNumber = false;
    const int number = end.mid(1).chopped(isWidth ? 6 : 5).toInt(&isNumber);
    if (!isNumber)
        return std::nullopt;
    return isWidth ? double(number) / widthInPoints : number;
}

QImage bitmapIn(const QString& file) {
    QImage bitmap(QStringLiteral(":/images/") + file);
    // Qt applies an "@2x" by itself when it reads the file; sizes here are always in pixels.
    bitmap.setDevicePixelRatio(1);
    return bitmap.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

} // namespace

std::optional<Image> Image::named(const QString& name) {
    static QHash<QString, std::shared_ptr<const Bitmaps>> loaded;
    if (const auto known = loaded.constFind(name); known != loaded.constEnd())
        return Image(name, *known);

    const QImage original = bitmapIn(name + QStringLiteral(".png"));
    if (original.isNull())
        return std::nullopt;
    auto bitmaps = std::make_shared<Bitmaps>();
    bitmaps->emplace(1, original);
    for (const QString& file : QDir(QStringLiteral(":/images")).entryList()) {
        if (!file.startsWith(name))
            continue;
        const auto scale = scaleOf(QStringView(file).mid(name.size()), original.width());
        const QImage bitmap = scale ? bitmapIn(file) : QImage();
        if (!bitmap.isNull())
            bitmaps->emplace(*scale, bitmap);
    }
    loaded.insert(name, bitmaps);
    return Image(name, bitmaps);
}

QSizeF Image::size() const {
    return bitmaps->at(1).size();
}

double Image::recommendedLayerContentsScale(double preferred) const {
    constexpr double rounding = 0.001; // of the transform that it is reckoned from
    const auto suitable = bitmaps->lower_bound(preferred - rounding);
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
