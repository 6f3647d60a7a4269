#include "Tests/Support/ManualRunLoop.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace velloren {

namespace {

// Sums of intervals are not exact: what is due within a microsecond is due.
constexpr RunLoop::Seconds tolerance{1e-6};

} // namespace

struct ManualRunLoop::Entry {
    Seconds due;
    std::optional<Seconds> interval;
    Task task;
};

class ManualRunLoop::ManualTimer final : public Timer {
  public:
    ManualTimer(ManualRunLoop& loop, std::shared_ptr<Entry> entry) : loop(loop), entry(std::move(entry)) {}

    void invalidate() override { loop.scheduled.remove(entry); }

  private:
    ManualRunLoop& loop;
    std::shared_ptr<Entry> entry;
};

void ManualRunLoop::post(Task task) {
    const std::scoped_lock lock(mutex);
    posted.push_back(std::move(task));
    arrived.notify_all();
}

void ManualRunLoop::postAfter(Seconds delay, Task task) {
    scheduled.push_back(std::make_shared<Entry>(Entry{now + delay, std::nullopt, std::move(task)}));
}

std::shared_ptr<RunLoop::Timer> ManualRunLoop::scheduleRepeating(Seconds interval, Task task) {
    scheduled.push_back(std::make_shared<Entry>(Entry{now + interval, interval, std::move(task)}));
    return std::make_shared<ManualTimer>(*this, scheduled.back());
}

void ManualRunLoop::runPending() {
    for (;;) {
        Task next;
        {
            const std::scoped_lock lock(mutex);
            if (posted.empty())
                return;
            next = std::move(posted.front());
            posted.pop_front();
        }
        next();
    }
}

std::list<std::shared_ptr<ManualRunLoop::Entry>>::iterator ManualRunLoop::earliest() {
    return std::min_element(scheduled.begin(), scheduled.end(),
                            [](const auto& a, const auto& b) { return a->due < b->due; });
}

void ManualRunLoop::runNextUntil(Seconds end) {
    const auto next = earliest();
    const auto entry = *next;
    now = std::min(std::max(now, entry->due), end);
    if (entry->interval)
        entry->due += *entry->interval;
    else
        scheduled.erase(next);
    entry->task();
    runPending();
}

void ManualRunLoop::advance(Seconds duration) {
    const Seconds end = now + duration;
    runPending();
    while (!scheduled.empty() && (*earliest())->due <= end + tolerance)
        runNextUntil(end);
    now = end;
}

bool ManualRunLoop::waitUntil(const std::function<bool()>& condition) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    for (;;) {
        runPending();
        if (condition())
            return true;
        std::unique_lock lock(mutex);
        if (std::chrono::steady_clock::now() > limit)
            return false;
        // Conditions may also be about what other threads wrote: look again soon.
        arrived.wait_for(lock, std::chrono::milliseconds(5), [this] { return !posted.empty(); });
    }
}

} // namespace velloren
