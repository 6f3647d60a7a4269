#pragma once

#include <QPoint>

#include <optional>

class QRect;
class QWidget;

namespace velloren {

/// What views need of the display that they are shown on. Lengths and places are in device-independent pixels
/// of the whole desktop. Main thread only.
class WindowServer {
  public:
    WindowServer() = default;
    WindowServer(const WindowServer&) = delete;
    WindowServer& operator=(const WindowServer&) = delete;
    virtual ~WindowServer() = default;

    /// The one of this session, provided through SharedInstance<WindowServer>.
    static WindowServer& shared();

    /// Where the pointer is; none on a display that does not tell.
    [[nodiscard]] virtual std::optional<QPoint> pointerLocation() const = 0;

    /// Whether something blends windows with what lies behind them; where it is not known, yes. Without it a
    /// translucent window shows black.
    [[nodiscard]] virtual bool isComposited() const = 0;

    /// Makes a window that was never shown a popover's: one that its owner alone places.
    virtual void preparePopover(QWidget& window) = 0;

    /// Puts a popover's window at `frame`, at once or when it is shown.
    virtual void placePopover(QWidget& window, const QRect& frame) = 0;
};

} // namespace velloren
