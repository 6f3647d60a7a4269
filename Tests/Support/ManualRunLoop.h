#pragma once

#include "Platform/Foundation/RunLoop.h"
#include "Tests/Support/Installable.h"

#include <condition_variable>
#include <deque>
#include <list>
#include <thread>

namespace velloren {

/// The run loop of the thread that made it, whose time passes when the test says so. Only `post` may be
/// called from other threads.
class ManualRunLoop final : public Installable<ManualRunLoop, RunLoop> {
  public:
    /// The main run loop of a test that provided a manual one.
    static ManualRunLoop& shared() { return static_cast<ManualRunLoop&>(RunLoop::main()); }

    void post(Task task) override;
    void postAfter(Seconds delay, Task task) override;
    std::shared_ptr<Timer> scheduleRepeating(Seconds interval, Task task) override;

    [[nodiscard]] bool isCurrent() const override { return home == std::this_thread::get_id(); }

    /// Runs what was posted, and what that posts, without time passing.
    void runPending();

    /// Lets `duration` pass: everything that falls due runs at its moment.
    void advance(Seconds duration);

    /// Runs what other threads post, until `condition` holds; whether it did within a generous limit of real
    /// time. No virtual time passes.
    bool waitUntil(const std::function<bool()>& condition);

    /// The repeating timers and delayed tasks that are still to come.
    [[nodiscard]] std::size_t pendingTimers() const { return scheduled.size(); }

  private:
    class Entry;
    using Moment = std::chrono::microseconds; // sums of seconds would not be exact

    std::mutex mutex;
    std::condition_variable arrived;
    std::deque<Task> posted;
    std::list<std::shared_ptr<Entry>> scheduled;
    Moment now{0};
    const std::thread::id home = std::this_thread::get_id();
};

} // namespace velloren
