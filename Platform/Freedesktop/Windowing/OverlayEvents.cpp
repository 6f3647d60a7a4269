#include "Platform/Freedesktop/Windowing/OverlayEvents.h"

#include <QApplication>
#include <QWidget>

#include <optional>
#include <utility>

namespace velloren {

namespace {

std::optional<EventType> pressTypeOf(Qt::MouseButton button) {
    switch (button) {
    case Qt::LeftButton:
        return EventType::LeftMouseDown;
    case Qt::MiddleButton:
        return EventType::OtherMouseDown;
    case Qt::RightButton:
        return EventType::RightMouseDown;
    default:
        return std::nullopt;
    }
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
    const auto type = pressTypeOf(button);
    if (!type)
        return;
    const Event event{*type, place};
    for (const Handler& handler : monitors.handlersFor(maskOf(*type)))
        handler(&event);
}

} // namespace velloren
