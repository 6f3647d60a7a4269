#pragma once

#include "Platform/Views/WindowServer.h"

namespace velloren {

/// An X server, and the window manager and compositor on it. Where this process shows itself on something
/// else, a display that tells nothing. A popover goes along to other workspaces. Main thread only.
class X11WindowServer final : public WindowServer {
  public:
    /// Within a Wayland session the server knows of the pointer only while it is over an X window, and tells
    /// an outdated place else.
    enum class Pointer { Known, Outdated };

    explicit X11WindowServer(Pointer pointer) : pointer(pointer) {}

    [[nodiscard]] std::optional<QPoint> pointerLocation() const override;
    [[nodiscard]] bool isComposited() const override;
    void preparePopover(QWidget& window) override;
    void findSite(QWidget& window, const QRect& anchor, SiteHandler found) override;
    void showPopover(QWidget& window, const QRect& frame) override;
    void hidePopover(QWidget& window) override;

  private:
    Pointer pointer;
};

} // namespace velloren
