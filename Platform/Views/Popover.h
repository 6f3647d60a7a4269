#pragma once

#include "Platform/Views/RectEdge.h"
#include "Platform/Views/View.h"
#include "Platform/Views/ViewController.h"

#include <functional>
#include <memory>

namespace velloren {

class PopoverWindow;

/// A bubble with an arrow that points at a view. It closes only when it is told to. Its window takes
/// the keyboard's focus but no grab; it is kept from one showing to the next where the display allows that,
/// and so is its content. Main thread only.
class Popover final {
  public:
    Popover();
    Popover(const Popover&) = delete;
    Popover& operator=(const Popover&) = delete;
    ~Popover();

    void setContentViewController(std::unique_ptr<ViewController> controller);

    [[nodiscard]] bool animates() const { return animated; }

    /// Whether the window may fade in and out, where the desktop does that; from the next showing on.
    void setAnimates(bool animates) { animated = animates; }

    [[nodiscard]] bool isShown() const { return shown; }

    /// Shows the content beside `rect` of `view`. The side is the preferred edge's, as the bar's place on the
    /// screen allows; a popover that is shown already moves there. Without a content nothing is shown.
    void showRelativeToRect(const QRect& rect, const View& view, RectEdge preferredEdge);

    /// Brings the popover to the front and gives it the keyboard, as far as the window manager lets it.
    void activate();

    /// Closes the popover; does nothing when it is not shown.
    void performClose();

    /// The window of the present showing; none while closed.
    [[nodiscard]] Window* contentWindow() const;

    /// Called when the user asks the window manager to close the popover's window.
    void setCloseRequestHandler(std::function<void()> handler) { closeRequested = std::move(handler); }

  private:
    void prepareWindow();

    std::unique_ptr<ViewController> controller;
    std::unique_ptr<PopoverWindow> window;
    std::function<void()> closeRequested;
    bool animated = true;
    bool shown = false;
};

} // namespace velloren
