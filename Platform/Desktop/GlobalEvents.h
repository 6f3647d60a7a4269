#pragma once

#include "Platform/Foundation/Subscription.h"
#include "Platform/Views/Event.h"

#include <functional>
#include <list>
#include <vector>

namespace velloren {

/// The presses of the pointer's buttons outside this process's windows. Main thread only.
class GlobalEvents {
  public:
    using Handler = std::function<void(const Event*)>;

    GlobalEvents() = default;
    GlobalEvents(const GlobalEvents&) = delete;
    GlobalEvents& operator=(const GlobalEvents&) = delete;
    virtual ~GlobalEvents() = default;

    /// The events of this display, provided through SharedInstance<GlobalEvents>.
    static GlobalEvents& shared();

    /// Calls `handler` for every event that `mask` names, for as long as the result lives. The monitor sees
    /// events and cannot hold them back: whoever they are for gets them as well.
    virtual Subscription addMonitorForEventsMatchingMask(EventMask mask, Handler handler) = 0;

    /// Whether the click that is under way, or has just ended, began with a press that a monitor was told of,
    /// or that dismissed a menu of this process while there was one. Answers yes once per press: what is
    /// asking then takes the click for one that has had its effect.
    [[nodiscard]] virtual bool takeClickSeenByMonitor() = 0;
};

/// The monitors of whoever implements GlobalEvents. A handler may end its own monitor or another.
class GlobalEventMonitors {
  public:
    /// Adds one for as long as the result lives; `changed` is called after both.
    Subscription add(EventMask mask, GlobalEvents::Handler handler, std::function<void()> changed = nullptr);

    [[nodiscard]] bool empty() const { return monitors.empty(); }

    /// The handlers of the monitors whose mask has a bit in common with `mask`.
    [[nodiscard]] std::vector<GlobalEvents::Handler> handlersFor(EventMask mask) const;

  private:
    struct Monitor {
        EventMask mask;
        GlobalEvents::Handler handler;
    };

    std::list<Monitor> monitors;
};

} // namespace velloren
