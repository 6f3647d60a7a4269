#include "Platform/Desktop/GlobalEvents.h"

#include "Platform/Foundation/SharedInstance.h"

namespace velloren {

GlobalEvents& GlobalEvents::shared() {
    return SharedInstance<GlobalEvents>::get();
}

Subscription GlobalEventMonitors::add(EventMask mask, GlobalEvents::Handler handler,
                                      std::function<void()> changed) {
    const auto monitor = monitors.insert(monitors.end(), {mask, std::move(handler)});
    if (changed)
        changed();
    return Subscription([this, monitor, changed = std::move(changed)] {
        monitors.erase(monitor);
        if (changed)
            changed();
    });
}

std::vector<GlobalEvents::Handler> GlobalEventMonitors::handlersFor(EventMask mask) const {
    std::vector<GlobalEvents::Handler> handlers;
    for (const Monitor& monitor : monitors) {
        if (monitor.mask & mask)
            handlers.push_back(monitor.handler);
    }
    return handlers;
}

} // namespace velloren
