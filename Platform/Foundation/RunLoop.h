#pragma once

#include "Platform/Foundation/SharedInstance.h"
#include "Platform/Foundation/Subscription.h"

#include <chrono>
#include <functional>
#include <memory>

namespace velloren {

/// The process's one loop, on the main thread: tasks run on it one after another, in the order in which they
/// fall due. Delays are in seconds.
class RunLoop {
  public:
    using Task = std::function<void()>;
    using Seconds = std::chrono::duration<double>;
    using Moment = std::chrono::sys_time<std::chrono::milliseconds>;

    /// A repeating timer. Main thread only.
    class Timer {
      public:
        Timer() = default;
        Timer(const Timer&) = delete;
        Timer& operator=(const Timer&) = delete;
        virtual ~Timer() = default;

        /// Ends the repetition; the task does not run again. A second call does nothing.
        virtual void invalidate() = 0;
    };

    RunLoop() = default;
    RunLoop(const RunLoop&) = delete;
    RunLoop& operator=(const RunLoop&) = delete;
    virtual ~RunLoop() = default;

    /// The main loop of this process, provided through SharedInstance<RunLoop>.
    static RunLoop& main() { return SharedInstance<RunLoop>::get(); }

    /// Runs `task` on the loop, never before `post` returns. Any thread; tasks of one thread keep their
    /// order.
    virtual void post(Task task) = 0;

    /// Runs `task` once, `delay` from now. Main thread only.
    virtual void postAfter(Seconds delay, Task task) = 0;

    /// Runs `task` every `interval`, the first time one interval from now. The loop goes on until the
    /// timer is invalidated, whether or not the caller keeps the result. Main thread only.
    virtual std::shared_ptr<Timer> scheduleRepeating(Seconds interval, Task task) = 0;

    /// What the system's clock shows. Any thread.
    [[nodiscard]] virtual Moment now() const {
        return std::chrono::floor<Moment::duration>(std::chrono::system_clock::now());
    }

    /// Runs `task` once, as soon as the system's clock shows `moment`, before that where somebody sets the
    /// clock; not any more once the result has ended, and never without a descriptor left for it. Main thread
    /// only.
    virtual Subscription postAt(Moment moment, Task task) = 0;

    /// Runs `task` each time there is something to read from `descriptor`, which outlives the result. Main
    /// thread only.
    virtual Subscription watch(int descriptor, Task task) = 0;

    /// Whether the calling thread is the loop's. Any thread.
    [[nodiscard]] virtual bool isCurrent() const = 0;
};

} // namespace velloren
