#pragma once

#include "Platform/Freedesktop/Windowing/PlainWindowServer.h"
#include "Platform/Freedesktop/Windowing/PressSource.h"

#include <memory>
#include <utility>

namespace velloren {

class WindowsAroundPopover;

/// The X server within a Wayland session, which knows of the pointer only while it is over an X window. A
/// popover's window is the window manager's, since no other gets the keyboard; and since nobody tells of
/// presses outside X windows, it comes with such windows that take them. Main thread only.
class XWaylandWindowServer final : public PlainWindowServer, public PressSource {
  public:
    XWaylandWindowServer();
    ~XWaylandWindowServer() override;

    void setPressHandler(Handler handler) override { pressHandler = std::move(handler); }

    void preparePopover(QWidget& window, ChangeHandler) override { declareShadow(window); }

    void setAnimates(QWidget& window, bool animates) override;
    void declareShadow(QWidget& window) override;
    void showPopover(QWidget& window, const QRect& frame) override;
    [[nodiscard]] bool hidePopover(QWidget& window) override;

  private:
    Handler pressHandler;
    std::unique_ptr<WindowsAroundPopover> surroundings;
};

} // namespace velloren
