#pragma once

#include <QImage>
#include <QRectF>
#include <QSizeF>
#include <QString>

#include <map>
#include <memory>
#include <optional>

class QPainter;

namespace velloren {

/// A picture of the application's resources with one bitmap per scale: `name.png` as large as the picture,
/// `name@2x.png` at twice that, `name@16px.png` drawn for 16 pixels across. Sizes are in points; a value that
/// shares its bitmaps with its copies.
class Image {
  public:
    /// Absence means that the resources hold no such picture, or one that cannot be read.
    [[nodiscard]] static std::optional<Image> named(const QString& name);

    [[nodiscard]] const QString& name() const { return imageName; }

    [[nodiscard]] QSizeF size() const;

    /// The scale of the bitmap that suits a layer whose scale is to be `preferred`: the least that is no
    /// smaller, else the greatest there is.
    [[nodiscard]] double recommendedLayerContentsScale(double preferred) const;

    /// Paints the picture into `rect`, from the bitmap that suits the painter's scale.
    void draw(QPainter& painter, const QRectF& rect) const;

    /// The same at its own size, in the middle of `rect`.
    void drawInMiddle(QPainter& painter, const QRectF& rect) const;

    friend bool operator==(const Image& a, const Image& b) { return a.bitmaps == b.bitmaps; }

  private:
    struct Bitmap {
        QString file;
        QImage pixels; ///< null until something is drawn from it
    };

    using Bitmaps = std::map<double, Bitmap>; // by scale

    Image(QString name, std::shared_ptr<Bitmaps> bitmaps)
        : imageName(std::move(name)), bitmaps(std::move(bitmaps)) {}

    static const QImage& pixelsOf(Bitmap& bitmap);

    QString imageName;
    std::shared_ptr<Bitmaps> bitmaps;
};

} // namespace velloren
