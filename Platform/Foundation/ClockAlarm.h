#pragma once

#include "Platform/Foundation/RunLoop.h"
#include "Platform/Foundation/UniqueDescriptor.h"

namespace velloren {

/// Runs a task once, when the system's clock shows a moment or was set, suspensions of the machine included.
/// Without a descriptor left for it, it never does. Main thread only.
class ClockAlarm {
  public:
    /// The loop outlives this.
    ClockAlarm(RunLoop& loop, RunLoop::Moment moment, RunLoop::Task task);
    ClockAlarm(const ClockAlarm&) = delete;
    ClockAlarm& operator=(const ClockAlarm&) = delete;

    void cancel() { arrival = {}; }

  private:
    void fire();

    RunLoop::Task task;
    const UniqueDescriptor descriptor; ///< outlives the arrival that is watched for on it
    Subscription arrival;
};

} // namespace velloren
