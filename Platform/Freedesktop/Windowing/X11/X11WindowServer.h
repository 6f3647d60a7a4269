#pragma once

#include "Platform/Freedesktop/Windowing/PlainWindowServer.h"

#include <QAbstractNativeEventFilter>
#include <QPointer>
#include <QWidget>

#include <cstdint>

namespace velloren {

class PopoverFocus;

/// An X server, and the window manager and compositor on it. A popover's window is not the window manager's
/// (override-redirect), like the pop-ups of menus: it stays where it is put, above everything and on every
/// workspace, and no task bar lists it. Main thread only; Qt has to be on X11.
class X11WindowServer final : public PlainWindowServer, private QAbstractNativeEventFilter {
  public:
    X11WindowServer();
    ~X11WindowServer() override;

    [[nodiscard]] std::optional<QPoint> pointerLocation() const override;
    [[nodiscard]] bool isComposited() const override;
    void preparePopover(QWidget& window, ChangeHandler compositingChanged) override;
    void setAnimates(QWidget& window, bool animates) override;
    void declareShadow(QWidget& window) override;
    /// The anchor becomes as thick as the bar that it lies in: where across the bar the press was makes no
    /// difference.
    void findSite(QWidget& window, const QRect& anchor, SiteHandler found) override;
    void showPopover(QWidget& window, const QRect& frame) override;
    /// The window is kept.
    [[nodiscard]] bool hidePopover(QWidget& window) override;

  private:
    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

    /// The one that is open, or about to be; none otherwise.
    QPointer<QWidget> popover;
    QPointer<PopoverFocus> focus; ///< of the latest that was prepared
    ChangeHandler compositingChanged;
    std::uint8_t selectionNotify = 0; ///< the number of that event here; 0 where the server has none
};

} // namespace velloren
