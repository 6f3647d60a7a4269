#include "Platform/Foundation/FatalError.h"
#include "Platform/Foundation/RunLoop.h"
#include "Platform/Views/Fonts.h"
#include "VellorenMenu/MainViewController.h"
#include "VellorenMenu/MenuAppDelegate.h"

#include <QPointer>

namespace velloren {

namespace {

constexpr RunLoop::Seconds calm{2}; // a session that starts has other things to do

/// Once a bar shows the icon there may be clicks: the first is not to wait for fonts. What the popover will
/// show is in the item's menu already, where the bar asked for that.
void prepareTextsWhenShown(StatusItem& item, StatusBarButton& button) {
    button.setFirstShownHandler([&item, &button] {
        RunLoop::main().postAfter(calm, [&item, alive = QPointer(&button)] {
            if (!alive)
                return;
            QStringList titles;
            for (const StatusMenuEntry& entry : item.menu().entries())
                titles.append(QString::fromStdString(entry.title));
            fonts::prepareFor(titles);
        });
    });
}

} // namespace

void MenuAppDelegate::setupUI() {
    if (StatusBarButton* button = statusBar->button()) {
        menubarIcon->setParent(button);
        menubarIcon->setDelegate(this);
        prepareTextsWhenShown(*statusBar, *button);
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
    statusBar->setToolTipAllowed(false);
    itemMenu.refillSoon();
    if (eventMonitor)
        eventMonitor->start();
}

void MenuAppDelegate::closePopover(QObject*) {
    menubarIcon->setHighlighted(false);
    statusBar->setToolTipAllowed(true);
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
