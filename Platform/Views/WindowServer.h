#pragma once

#include "Platform/Foundation/SharedInstance.h"
#include "Platform/Views/PopoverPlacement.h"

#include <QPoint>

#include <functional>
#include <optional>

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
    static WindowServer& shared() { return SharedInstance<WindowServer>::get(); }

    /// Where the pointer is; none on a display that does not tell.
    [[nodiscard]] virtual std::optional<QPoint> pointerLocation() const = 0;

    /// Whether something blends windows with what lies behind them; where it is not known, yes. Without it a
    /// translucent window shows black.
    [[nodiscard]] virtual bool isComposited() const = 0;

    using ChangeHandler = std::function<void()>;
    using SiteHandler = std::function<void(const PopoverSite&)>;

    /// Makes a window that was never shown a popover's: one that its owner alone places. There is one such
    /// window at a time. `compositingChanged` is called, while it is shown, when the display starts or ceases
    /// to be composited.
    virtual void preparePopover(QWidget& window, ChangeHandler compositingChanged) = 0;

    /// Whether the popover's window may fade in and out, or comes and goes at once, where the display lets a
    /// window say so.
    virtual void setAnimates(QWidget&, bool) {}

    /// The window draws its shadow itself: the display, where it draws any, leaves its own out. Once the
    /// window has a native one.
    virtual void declareShadow(QWidget&) {}

    /// Calls `found` with the site of a popover at `anchor`. That is once, at once or a little later; never
    /// after the popover was hidden. An empty anchor belongs to nothing: the popover goes where the pointer
    /// is. Where the display does not tell the pointer's place, an anchor's centre is the number that a host
    /// named, which may count device-independent pixels or the screen's own.
    virtual void findSite(QWidget& window, const QRect& anchor, SiteHandler found) = 0;

    /// Shows a popover's window at `frame`, at once or as soon as the display lets it, or moves it there.
    virtual void showPopover(QWidget& window, const QRect& frame) = 0;

    /// Hides a popover's window. Whether it can be shown once more.
    [[nodiscard]] virtual bool hidePopover(QWidget& window) = 0;
};

} // namespace velloren
