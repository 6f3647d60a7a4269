#include "Platform/Views/Popover.h"

#include "Platform/Views/PopoverWindow.h"
#include "Platform/Views/WindowServer.h"

namespace velloren {

Popover::Popover() = default;

Popover::~Popover() {
    performClose();
}

void Popover::setContentViewController(std::unique_ptr<ViewController> newController) {
    performClose();
    controller = std::move(newController);
}

void Popover::showRelativeToRect(const QRect& rect, const View& view, RectEdge) {
    if (!controller)
        return;
    const QRect anchor = view.rectOnScreen(rect);
    if (shown) {
        window->showAt(anchor);
        return;
    }
    controller->viewWillAppear();
    prepareWindow();
    shown = true;
    WindowServer::shared().setAnimates(*window, animated);
    window->setContent(controller->view());
    window->showAt(anchor);
    activate();
    controller->viewDidAppear();
}

void Popover::prepareWindow() {
    if (window && window->suitsDisplay())
        return;
    window = std::make_unique<PopoverWindow>();
    window->setCloseRequestHandler([this] {
        if (closeRequested)
            closeRequested();
    });
}

void Popover::activate() {
    if (!shown)
        return;
    window->raise();
    window->activateWindow();
}

void Popover::performClose() {
    if (!shown)
        return;
    shown = false;
    const bool remains = WindowServer::shared().hidePopover(*window);
    window->releaseContent();
    // A click on something inside may be what closes the popover: the window is still handling it.
    if (!remains)
        window.release()->deleteLater();
    controller->viewDidDisappear();
}

Window* Popover::contentWindow() const {
    return shown ? window.get() : nullptr;
}

} // namespace velloren
