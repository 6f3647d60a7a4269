#pragma once

#include "Platform/Freedesktop/Windowing/PlainWindowServer.h"

#include <memory>

namespace velloren {

class OverlayEvents;
class WindowsAroundPopover;

/// The X server within a Wayland session, which knows of the pointer only while it is over an X window. A
/// popover's window is the window manager's, since no other gets the keyboard; and since nobody tells of
/// presses outside X windows, it comes with such windows that take them. Main thread only.
class XWaylandWindowServer final : public PlainWindowServer {
  public:
    /// Presses on such windows become these events, which outlive this.
    explicit XWaylandWindowServer(OverlayEvents& events);
    ~XWaylandWindowServer() override;

    void preparePopover(QWidget& window, ChangeHandler) override { declareShadow(window); }

    void setAnimates(QWidget& window, bool animates) override;
    void declareShadow(QWidget& window) override;
    void showPopover(QWidget& window, const QRect& frame) override;
    [[nodiscard]] bool hidePopover(QWidget& window) override;

  private:
    OverlayEvents& events;
    std::unique_ptr<WindowsAroundPopover> surroundings;
};

} // namespace velloren
