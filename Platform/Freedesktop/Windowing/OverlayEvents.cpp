#include "Platform/Freedesktop/Windowing/OverlayEvents.h"

#include <QApplication>
#include <QWidget>

#include <utility>

namespace velloren {

namespace {

EventType pressTypeOf(Qt::MouseButton button) {
    if (button == Qt::LeftButton)
        return EventType::LeftMouseDown;
    return button == Qt::RightButton ? EventType::RightMouseDown : EventType::OtherMouseDown;
}

} // namespace

Subscription OverlayEvents::addMonitorForEventsMatchingMask(EventMask mask, Handler handler) {
    return monitors.add(mask, std::move(handler));
}

void OverlayEvents::handlePress(Qt::MouseButton button, QPoint place) {
    if (QWidget* menu = QApplication::activePopupWidget()) {
        menu->close(); // to dismiss it is all that this click does
        return;
    }
    const Event event{pressTypeOf(button), place};
    for (const Handler& handler : monitors.handlersFor(maskOf(event.type)))
        handler(&event);
}

} // namespace velloren
