#include "Platform/Views/Image.h"

#include <QDirIterator>
#include <QHash>
#include <QImageReader>
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

/// Left to find the format out, Qt would load its plug-ins for all others first.
QImage bitmapIn(const QString& file) {
    QImageReader reader(QStringLiteral(":/images/") + file, "png");
    reader.setAutoDetectImageFormat(false);
    return reader.read().convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

} // namespace

std::optional<Image> Image::named(const QString& name) {
    static QHash<QString, std::shared_ptr<Bitmaps>> known;
    if (const auto found = known.constFind(name); found != known.constEnd())
        return Image(name, *found);

    Bitmap original{name + QStringLiteral(".png"), {}};
    const int width = pixelsOf(original).width();
    if (width == 0)
        return std::nullopt;
    auto bitmaps = std::make_shared<Bitmaps>();
    bitmaps->emplace(1, std::move(original));
    for (QDirIterator files(QStringLiteral(":/images")); files.hasNext();) {
        files.next();
        const QString file = files.fileName();
        if (!file.startsWith(name))
            continue;
        if (const auto scale = scaleOf(QStringView(file).mid(name.size()), width))
            bitmaps->emplace(*scale, Bitmap{file, {}});
    }
    known.insert(name, bitmaps);
    return Image(name, bitmaps);
}

const QImage& Image::pixelsOf(Bitmap& bitmap) {
    if (bitmap.pixels.isNull())
        bitmap.pixels = bitmapIn(bitmap.file);
    return bitmap.pixels;
}

QSizeF Image::size() const {
    return pixelsOf(bitmaps->at(1)).size();
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
    painter.drawImage(rect, pixelsOf(bitmaps->at(scale)));
    painter.restore();
}

void Image::drawInMiddle(QPainter& painter, const QRectF& rect) const {
    QRectF place({}, size());
    place.moveCenter(rect.center());
    draw(painter, place);
}

} // namespace velloren
