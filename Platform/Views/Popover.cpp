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
    if (window) {
        window->showAt(anchor);
        return;
    }
    controller->viewWillAppear();
    window = std::make_unique<PopoverWindow>();
    if (!animated)
        WindowServer::shared().disableAnimation(*window);
    window->setCloseRequestHandler([this] {
        if (closeRequested)
            closeRequested();
    });
    window->setContent(controller->view());
    window->showAt(anchor);
    activate();
    controller->viewDidAppear();
}

void Popover::activate() {
    if (!window)
        return;
    window->raise();
    window->activateWindow();
}

void Popover::performClose() {
    if (!window)
        return;
    WindowServer::shared().hidePopover(*window);
    window->releaseContent();
    // A click on something inside may be what closes the popover: the window is still handling it.
    window.release()->deleteLater();
    controller->viewDidDisappear();
}

Window* Popover::contentWindow() const {
    return window.get();
}

} // namespace velloren
