#pragma once

#include "Platform/Freedesktop/Windowing/Wayland/LayerShell.h"
#include "Platform/Freedesktop/Windowing/Wayland/LayerSurface.h"

#include <QPoint>
#include <QWindow>

#include <functional>
#include <optional>

namespace velloren {

class OverlayEvents;

/// A transparent surface over a whole screen, bars and fullscreen windows included. The compositor tells it
/// where the pointer is, and gives it what is pressed there. Main thread only.
class ScreenOverlay final : public QWindow {
    Q_OBJECT

  public:
    struct Handlers {
        std::function<void()> pointerKnown;
        std::function<void()> released; ///< after a press, also where the pointer is lost
    };

    /// Presses become these events; touches are the left button's.
    ScreenOverlay(const LayerShell& shell, QScreen& screen, OverlayEvents& events, Handlers handlers);
    ~ScreenOverlay() override;

    /// Where the pointer is, on the whole desktop; none while it is not over this screen, as far as the
    /// compositor has told.
    [[nodiscard]] std::optional<QPoint> pointer() const { return pointerPlace; }

    /// Whether a button or a finger is down that was pressed here: until it is up, the compositor tells
    /// nobody else.
    [[nodiscard]] bool isPressed() const { return pressUnderWay; }

    /// Leaves what is pressed there, on the whole desktop, to the surfaces that show something there: the
    /// order of those that share a layer is the compositor's to choose.
    void leaveOut(const QRegion& places);

  protected:
    bool event(QEvent* event) override;

  private:
    void pointerIsAt(QPointF place);
    void press(Qt::MouseButton button, QPointF place);
    void release();

    const LayerShell& shell;
    OverlayEvents& events;
    Handlers handlers;
    wl_surface& surface;
    std::optional<QPoint> pointerPlace;
    bool pressUnderWay = false;
    std::unique_ptr<LayerSurface> role;
    std::shared_ptr<void> shown;
};

} // namespace velloren
