#pragma once

#include "Platform/Freedesktop/Windowing/CaughtPresses.h"
#include "Platform/Views/WindowServer.h"

#include <QAbstractNativeEventFilter>
#include <QPointer>
#include <QWidget>

#include <cstdint>
#include <memory>
#include <utility>

namespace velloren {

class PopoverFocus;
class XPressCatcher;

/// An X server, and the window manager and compositor on it. A popover's window is not the window manager's
/// (override-redirect), like the pop-ups of menus: it stays where it is put, above everything and on every
/// workspace, and no task bar lists it. Within a Wayland session it is, since nothing else gets the keyboard
/// there; and since nobody tells of presses outside X windows there, it comes with such windows that take
/// them. Where this process shows itself on something else, a display that tells nothing. Main thread only.
class X11WindowServer final : public WindowServer, public PressTaker, private QAbstractNativeEventFilter {
  public:
    /// Within a Wayland session the server knows of the pointer only while it is over an X window, and tells
    /// an outdated place else; and it sees none of the desktop's bars.
    enum class Session { X11, Wayland };

    explicit X11WindowServer(Session session);
    ~X11WindowServer() override;

    /// Only within a Wayland session is anything told.
    void setPressHandler(Handler handler) override { pressed = std::move(handler); }

    [[nodiscard]] std::optional<QPoint> pointerLocation() const override;
    [[nodiscard]] bool isComposited() const override;
    void preparePopover(QWidget& window, ChangeHandler compositingChanged) override;
    void setAnimates(QWidget& window, bool animates) override;
    void declareShadow(QWidget& window) override;
    /// The anchor becomes what is drawn around it in the bar that it lies in, from one side of the bar to the
    /// other: where in the icon the press was makes no difference.
    void findSite(QWidget& window, const QRect& anchor, SiteHandler found) override;
    void showPopover(QWidget& window, const QRect& frame) override;
    [[nodiscard]] bool hidePopover(QWidget& window) override;

  private:
    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

    Session session;
    /// The one that is open, or about to be; none otherwise.
    QPointer<QWidget> popover;
    QPointer<PopoverFocus> focus; ///< of the latest that was prepared
    ChangeHandler compositingChanged;
    Handler pressed;
    std::unique_ptr<XPressCatcher> catcher;
    std::uint8_t selectionNotify = 0; ///< the number of that event here; 0 where the server has none
};

} // namespace velloren
