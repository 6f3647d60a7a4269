#pragma once

#include "Platform/Event.h"
#include "Platform/Subscription.h"

#include <functional>

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

    /// Whether the click that is under way, or has just ended, began with a press that a monitor was told of.
    /// Answers yes once per press: what is asking then takes the click for one that has had its effect.
    [[nodiscard]] virtual bool takeClickSeenByMonitor() = 0;
};

} // namespace velloren
