#include "VellorenMenu/EventMonitor.h"

#include <utility>

namespace velloren {

EventMonitor::EventMonitor(EventMask mask, Handler handler) : mask(mask), handler(std::move(handler)) {}

EventMonitor::~EventMonitor() {
    stop();
}

void EventMonitor::start() {
    auto added = GlobalEvents::shared().addMonitorForEventsMatchingMask(mask, handler);
    if (monitor)
        monitor->abandon();
    monitor = std::move(added);
}

void EventMonitor::stop() {
    monitor.reset();
}

} // namespace velloren
