#pragma once

#include "Platform/Views/PopoverPlacement.h"
#include "Platform/Views/View.h"
#include "Platform/Views/WindowServer.h"

#include <functional>
#include <memory>

namespace velloren {

/// The frame of a popover: the bubble's shape, arrow included, around the content.
class PopoverFrameView final : public View {
    Q_OBJECT

  public:
    using View::View;

    /// None without an edge.
    void setArrow(std::optional<ArrowEdge> edge, int centre);

    /// The bubble's shape in this view's coordinates.
    [[nodiscard]] std::optional<QPainterPath> outline() const override { return shape; }

    /// The arrow's part of the outline.
    [[nodiscard]] const QPainterPath& arrow() const { return arrowShape; }

    /// The rectangle within the arrow's side.
    [[nodiscard]] QRect contentRect() const;

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    void updateShape();
    [[nodiscard]] QPainterPath shapeOfArrow(ArrowEdge edge) const;

    QPainterPath shape;
    QPainterPath arrowShape;
    std::optional<ArrowEdge> arrowEdge;
    int arrowCentre = 0;
};

/// The window of a popover. It follows the size that its content asks for. Its controls are
/// reached by Tab or the arrow keys and work by Return as well as by Space; Escape asks for it to be closed,
/// and so does a change of the screens: nobody tells where its icon is then.
class PopoverWindow final : public Window {
    Q_OBJECT

  public:
    PopoverWindow();

    /// Whether a new window would blend as this one does with what lies behind it, and have as many pixels to
    /// a point.
    [[nodiscard]] bool suitsDisplay() const;

    /// Takes the content in, for one showing, in a frame of its own; `releaseContent` gives it back.
    void setContent(QWidget& content);
    void releaseContent();

    [[nodiscard]] QWidget* contentView() const override { return content; }

    /// None without a content.
    [[nodiscard]] const PopoverFrameView* frameView() const { return frame.get(); }

    /// Shows the window, or moves it. `anchor` is what the arrow points at, on the screen. With an empty one
    /// there is none, and the first control has the keyboard: no click has led here.
    void showAt(const QRect& anchor);

    void setCloseRequestHandler(std::function<void()> handler) { closeRequested = std::move(handler); }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void place();
    void focusFirst();
    void watchScreens();
    void requestClose();

    std::unique_ptr<PopoverFrameView> frame;
    QWidget* content = nullptr;
    std::optional<PopoverSite> site;
    bool composited;
    bool focusesFirst = false; ///< as long as the user chose no other control
    double pixelsPerPoint;     ///< of the screen when the window was made
    std::function<void()> closeRequested;
};

} // namespace velloren
