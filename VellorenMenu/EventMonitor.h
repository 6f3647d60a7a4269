#pragma once

#include "Platform/Desktop/GlobalEvents.h"

#include <functional>
#include <optional>

namespace velloren {

/// Watches events outside this process's windows between `start` and `stop`. Main thread only.
class EventMonitor {
  public:
    /// Gets the event that was seen.
    using Handler = GlobalEvents::Handler;

    EventMonitor(EventMask mask, Handler handler);
    EventMonitor(const EventMonitor&) = delete;
    EventMonitor& operator=(const EventMonitor&) = delete;
    ~EventMonitor();

    /// Started once more, it watches twice: what it started before stays for as long as the process does.
    void start();
    /// Ends what was started last.
    void stop();

  private:
    /// None while stopped.
    std::optional<Subscription> monitor;
    EventMask mask;
    Handler handler;
};

} // namespace velloren
