#pragma once

#include "Platform/Freedesktop/Windowing/PlainWindowServer.h"

#include <QPointer>

namespace velloren {

class PopoverFocus;

/// An X server, and the window manager and compositor on it. A popover's window is not the window manager's
/// (override-redirect), like the pop-ups of menus: it stays where it is put, above everything and on every
/// workspace, and no task bar lists it. Main thread only; Qt has to be on X11.
class X11WindowServer final : public PlainWindowServer {
  public:
    [[nodiscard]] std::optional<QPoint> pointerLocation() const override;
    [[nodiscard]] bool isComposited() const override;
    void preparePopover(QWidget& window) override;
    void declareOwnLook(QWidget& window) override;
    /// The anchor becomes as thick as the bar that it lies in: where across the bar the press was makes no
    /// difference.
    void findSite(QWidget& window, const QRect& anchor, SiteHandler found) override;
    void showPopover(QWidget& window, const QRect& frame) override;
    /// The window is kept.
    [[nodiscard]] bool hidePopover(QWidget& window) override;

  private:
    QPointer<PopoverFocus> focus; ///< of the latest that was prepared
};

} // namespace velloren
