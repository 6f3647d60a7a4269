#pragma once

#include "Platform/Foundation/Subscription.h"

#include <memory>

struct sd_event;

namespace velloren {

/// sd-bus's event loop as a part of the main run loop: one thing that is due there in each turn of that, so
/// that nobody who sends without end keeps the others waiting. Main thread only.
class BusLoop final {
  public:
    BusLoop();
    BusLoop(const BusLoop&) = delete;
    BusLoop& operator=(const BusLoop&) = delete;
    ~BusLoop();

    /// What connections are attached to.
    [[nodiscard]] sd_event* events() const { return loop; }

    /// To be called after a connection was started or something was sent on it: what sd-bus waits for is only
    /// known once its loop had a turn.
    void wakeUp();

  private:
    void turn();

    sd_event* loop = nullptr;
    Subscription readiness;
    std::shared_ptr<bool> turnIsDue = std::make_shared<bool>(false);
};

} // namespace velloren
