#include "Tests/Support/ManualRunLoop.h"

#include <algorithm>

namespace velloren {

class ManualRunLoop::Entry final : public Timer {
  public:
    Entry(ManualRunLoop& loop, Moment due, Moment interval, Task task)
        : due(due), interval(interval), task(std::move(task)), loop(loop) {}

    void invalidate() override {
        std::erase_if(loop.scheduled, [this](const auto& entry) { return entry.get() == this; });
    }

    Moment due;
    const Moment interval; ///< zero is once
    const Task task;

  private:
    ManualRunLoop& loop;
};

void ManualRunLoop::post(Task task) {
    const std::scoped_lock lock(mutex);
    posted.push_back(std::move(task));
    arrived.notify_all();
}

void ManualRunLoop::postAfter(Seconds delay, Task task) {
    const Moment due = now + std::chrono::round<Moment>(delay);
    scheduled.push_back(std::make_shared<Entry>(*this, due, Moment::zero(), std::move(task)));
}

std::shared_ptr<RunLoop::Timer> ManualRunLoop::scheduleRepeating(Seconds interval, Task task) {
    const auto period = std::chrono::round<Moment>(interval);
    scheduled.push_back(std::make_shared<Entry>(*this, now + period, period, std::move(task)));
    return scheduled.back();
}

void ManualRunLoop::runPending() {
    for (std::unique_lock lock(mutex); !posted.empty(); lock.lock()) {
        const Task next = std::move(posted.front());
        posted.pop_front();
        lock.unlock();
        next();
    }
}

void ManualRunLoop::advance(Seconds duration) {
    const Moment end = now + std::chrono::round<Moment>(duration);
    runPending();
    while (!scheduled.empty()) {
        const auto next =
            std::ranges::min_element(scheduled, {}, [](const auto& entry) { return entry->due; });
        const auto entry = *next;
        if (entry->due > end)
            break;
        now = entry->due;
        entry->due += entry->interval;
        if (entry->interval == Moment::zero())
            scheduled.erase(next);
        entry->task();
        runPending();
    }
    now = end;
}

bool ManualRunLoop::waitUntil(const std::function<bool()>& condition) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    for (;;) {
        runPending();
        if (condition())
            return true;
        if (std::chrono::steady_clock::now() > limit)
            return false;
        // Conditions may also be about what other threads wrote: look again soon.
        std::unique_lock lock(mutex);
        arrived.wait_for(lock, std::chrono::milliseconds(5), [this] { return !posted.empty(); });
    }
}

} // namespace velloren
