#include "Platform/Foundation/ClockAlarm.h"

#include <sys/timerfd.h>
#include <utility>

namespace velloren {

namespace {

itimerspec onceAt(RunLoop::Moment moment) {
    const auto sinceEpoch = moment.time_since_epoch();
    const auto seconds = std::chrono::floor<std::chrono::seconds>(sinceEpoch);
    itimerspec time{};
    time.it_value.tv_sec = seconds.count();
    time.it_value.tv_nsec = std::chrono::nanoseconds(sinceEpoch - seconds).count();
    return time;
}

} // namespace

ClockAlarm::ClockAlarm(RunLoop& loop, RunLoop::Moment moment, RunLoop::Task task)
    : task(std::move(task)), descriptor(::timerfd_create(CLOCK_REALTIME, TFD_CLOEXEC | TFD_NONBLOCK)) {
    const itimerspec time = onceAt(moment);
    constexpr int flags = TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET;
    if (descriptor && ::timerfd_settime(descriptor.get(), flags, &time, nullptr) == 0)
        arrival = loop.watch(descriptor.get(), [this] { fire(); });
}

void ClockAlarm::fire() {
    cancel();
    const RunLoop::Task due = std::move(task); // it may end this
    due();
}

} // namespace velloren
