#include "VellorenMenu/EventMonitor.h"

#include <utility>

namespace velloren {

EventMonitor::EventMonitor(EventMask mask, Handler handler) : mask(mask), handler(std::move(handler)) {}

EventMonitor::~EventMonitor() {
    stop();
}

void EventMonitor::start() {
    monitor = GlobalEvents::shared().addMonitorForEventsMatchingMask(mask, handler);
}

void EventMonitor::stop() {
    monitor.reset();
}

} // namespace velloren
