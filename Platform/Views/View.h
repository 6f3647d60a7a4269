#pragma once

#include "Platform/Views/Event.h"
#include "Platform/Views/Layer.h"
#include "Platform/Views/Nib.h"

#include <QPainterPath>
#include <QTimer>
#include <QWidget>

#include <memory>
#include <vector>

namespace velloren {

class Window;

/// An area of a view whose crossings by the pointer are reported to the view, whichever window is active.
struct TrackingArea {
    QRect rect; ///< in the view's coordinates
};

/// Base of the product's views: a widget with an optional layer, tracking areas, and the life-cycle calls
/// that the interface form and the windows make. Lengths are device-independent pixels. Main thread only.
class View : public QWidget, public AwakesFromNib {
    Q_OBJECT

  public:
    explicit View(QWidget* parent = nullptr);

    /// Gives the view a layer, or takes it away.
    void setWantsLayer(bool wants);

    [[nodiscard]] bool wantsLayer() const { return ownLayer != nullptr; }

    /// None without `setWantsLayer(true)`.
    [[nodiscard]] Layer* layer() const { return ownLayer.get(); }

    /// Marks the whole view as needing display.
    void setNeedsDisplay();

    /// The window this view is in; none while it is in none of the product's windows.
    [[nodiscard]] Window* hostWindow() const;

    /// Where the rectangle, in this view's coordinates, is on the screen.
    [[nodiscard]] virtual QRect rectOnScreen(const QRect& rect) const;

    /// The part of this view within which its background and those of its subviews stay; none is its whole
    /// rectangle.
    [[nodiscard]] virtual std::optional<QPainterPath> outline() const { return std::nullopt; }

    void awakeFromNib() override {}

    /// The view is about to be placed into `window`, or taken out of its window when that is none.
    virtual void viewWillMoveToWindow(Window*) {}

    virtual void viewDidMoveToWindow() {}

    /// A press of the main button on a view of the status bar.
    virtual void mouseDown(const Event&) {}

    virtual void updateTrackingAreas() {}

    void addTrackingArea(const std::shared_ptr<TrackingArea>& area);
    void removeTrackingArea(const std::shared_ptr<TrackingArea>& area);

    [[nodiscard]] const std::vector<std::shared_ptr<TrackingArea>>& trackingAreas() const { return areas; }

  protected:
    /// The view's own drawing, below its layer's contents. Changes of the layer made here need no redraw.
    virtual void drawRect(QPainter&, const QRect& /*dirtyRect*/) {}

    virtual void mouseEntered() {}

    virtual void mouseExited() {}

    /// A view below this one, or this one, changed what it shows.
    virtual void displayNeeded();

    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

  private:
    void layerChanged();
    void leaveTrackedArea();
    void runAnimationsWhileVisible();
    [[nodiscard]] QTransform layerRotation() const;
    [[nodiscard]] std::optional<QPainterPath> backgroundShape() const;

    std::shared_ptr<Layer> ownLayer;
    std::vector<std::shared_ptr<TrackingArea>> areas;
    QTimer animationFrames;
    bool painting = false;
    bool pointerInside = false;
};

/// Puts `view` under `superview` (none takes it out), telling it and every view below it when that changes
/// the window they are in.
void moveToSuperview(QWidget& view, QWidget* superview);

/// A top-level window of the product with a content view inside a frame view.
class Window : public QWidget {
    Q_OBJECT

  public:
    using QWidget::QWidget;

    /// None while the window has no content.
    [[nodiscard]] virtual QWidget* contentView() const = 0;
};

} // namespace velloren
