#pragma once

#include "Platform/Views/BasicAnimation.h"
#include "Platform/Views/Image.h"

#include <QColor>
#include <QPainterPath>
#include <QPointF>
#include <QRectF>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class QPainter;

namespace velloren {

/// What a layer-backed view shows beside its own drawing: a background, an image, sublayers. The owning view
/// paints it. Lengths are in points. Main thread only.
class Layer {
  public:
    using Clock = std::chrono::steady_clock;

    Layer() = default;
    Layer(const Layer&) = delete;
    Layer& operator=(const Layer&) = delete;
    ~Layer();

    [[nodiscard]] const std::optional<QColor>& backgroundColor() const { return background; }

    /// None is transparent.
    void setBackgroundColor(std::optional<QColor> color);

    void setContents(std::optional<Image> contents);

    void setBounds(const QRectF& bounds);

    /// The place within the bounds, as a fraction of their size, that stands at `position`.
    void setAnchorPoint(QPointF point);

    /// In the coordinates of the superlayer; for a view's own layer, in those of the view.
    [[nodiscard]] QPointF position() const { return place; }

    void setPosition(QPointF point);

    [[nodiscard]] double rasterizationScale() const { return scale; }

    void setRasterizationScale(double pixelsPerPoint) { scale = pixelsPerPoint; }

    [[nodiscard]] Layer* superlayer() const { return parent; }

    [[nodiscard]] const std::vector<std::shared_ptr<Layer>>& sublayers() const { return children; }

    void addSublayer(const std::shared_ptr<Layer>& layer);
    void removeFromSuperlayer();

    /// Replaces an animation of the same key; it starts now.
    void addAnimation(const BasicAnimation& animation, const std::string& key);
    /// None when no animation is registered under the key.
    [[nodiscard]] const BasicAnimation* animationForKey(const std::string& key) const;
    void removeAnimationForKey(const std::string& key);
    [[nodiscard]] bool isAnimating(Clock::time_point now) const;

    /// The turn about `position` at that moment, in radians.
    [[nodiscard]] double rotation(Clock::time_point now) const;

    /// Paints the background over `area`, or over the part of it inside `shape` where there is one, then the
    /// contents and the sublayers.
    void draw(QPainter& painter, const QRectF& area,
              const std::optional<QPainterPath>& shape = std::nullopt) const;

    /// Called after every change of this layer or of one below it.
    void setChangeHandler(std::function<void()> handler) { changed = std::move(handler); }

  private:
    struct Running {
        BasicAnimation animation;
        Clock::time_point start;
    };

    void drawAsSublayer(QPainter& painter) const;
    void notifyChange() const;

    std::optional<QColor> background;
    std::optional<Image> image;
    QRectF rect;
    QPointF anchor{0.5, 0.5};
    QPointF place;
    double scale = 1;
    Layer* parent = nullptr;
    std::vector<std::shared_ptr<Layer>> children;
    std::map<std::string, Running> animations;
    std::function<void()> changed;
};

} // namespace velloren
