#include "Platform/Foundation/FatalError.h"
#include "VellorenMenu/MainViewController.h"
#include "VellorenMenu/MenuAppDelegate.h"

namespace velloren {

void MenuAppDelegate::setupUI() {
    if (StatusBarButton* button = statusBar->button()) {
        menubarIcon->setParent(button);
        menubarIcon->setDelegate(this);
    }
    popOver.setContentViewController(MainViewController::controller());
    popOver.setAnimates(false);
    popOver.setCloseRequestHandler([this] { closePopover(nullptr); });

    EventMask mask = 0;
    for (const EventType type : {EventType::LeftMouseDown, EventType::RightMouseDown})
        mask |= maskOf(type);
    eventMonitor.emplace(mask, [this](const Event* event) { outsideClick(event); });
}

void MenuAppDelegate::showPopover(QObject*) {
    if (const StatusBarButton* button = statusBar->button())
        popOver.showRelativeToRect(button->rect(), *button, RectEdge::MaxY);
    menubarIcon->setHighlighted(true);
    if (eventMonitor)
        eventMonitor->start();
}

void MenuAppDelegate::closePopover(QObject*) {
    menubarIcon->setHighlighted(false);
    popOver.performClose();
    if (eventMonitor)
        eventMonitor->stop();
}

void MenuAppDelegate::applicationShouldHandleReopen() {
    if (popOver.isShown()) {
        popOver.activate();
        return;
    }
    if (StatusBarButton* button = statusBar->button())
        button->forgetPress();
    showPopover(nullptr);
}

void MenuAppDelegate::didMouseDown(MenubarIcon& icon) {
    if (popOver.isShown())
        closePopover(&icon);
    else
        showPopover(&icon);
}

void MenuAppDelegate::outsideClick(const Event* event) {
    if (!popOver.isShown())
        return;
    if (!event)
        fatalError("a click outside the popover came without its event");
    closePopover(nullptr);
}

} // namespace velloren
