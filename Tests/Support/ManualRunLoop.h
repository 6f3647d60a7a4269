#pragma once

#include "Platform/Foundation/RunLoop.h"
#include "Tests/Support/Installable.h"

#include <algorithm>
#include <deque>
#include <list>
#include <poll.h>
#include <thread>

namespace velloren {

/// The run loop of the thread that made it, whose time passes when the test says so. Other threads may only
/// call `post`, and only while that one waits for their end.
class ManualRunLoop final : public Installable<ManualRunLoop, RunLoop> {
  public:
    void post(Task task) override { posted.push_back(std::move(task)); }

    void postAfter(Seconds delay, Task task) override { schedule(delay, Time::zero(), std::move(task)); }

    std::shared_ptr<Timer> scheduleRepeating(Seconds interval, Task task) override {
        return schedule(interval, std::chrono::round<Time>(interval), std::move(task));
    }

    [[nodiscard]] Moment now() const override {
        return start + std::chrono::floor<std::chrono::milliseconds>(elapsed);
    }

    Subscription postAt(Moment moment, Task task) override {
        const auto entry = schedule(moment - now(), Time::zero(), std::move(task));
        byClock.push_back(entry);
        return Subscription([entry] { entry->invalidate(); });
    }

    /// Somebody sets the system's clock.
    void setClock(Moment moment) {
        start += moment - now();
        for (const auto& entry : std::exchange(byClock, {}))
            entry->due = elapsed;
        advance(Seconds::zero());
    }

    Subscription watch(int descriptor, Task task) override {
        const auto entry = watched.emplace(watched.end(), descriptor, std::move(task));
        return Subscription([this, entry] { watched.erase(entry); });
    }

    [[nodiscard]] bool isCurrent() const override { return home == std::this_thread::get_id(); }

    /// Runs what was posted, and what that posts, without time passing.
    void runPending() {
        while (!posted.empty()) {
            const Task next = std::move(posted.front());
            posted.pop_front();
            next();
        }
    }

    /// Lets `duration` pass: everything that falls due runs at its moment.
    void advance(Seconds duration) {
        const Time end = elapsed + std::chrono::round<Time>(duration);
        runPending();
        while (!scheduled.empty()) {
            const auto next =
                std::ranges::min_element(scheduled, {}, [](const auto& entry) { return entry->due; });
            const auto entry = *next;
            if (entry->due > end)
                break;
            elapsed = entry->due;
            entry->due += entry->interval;
            if (entry->interval == Time::zero())
                scheduled.erase(next);
            entry->task();
            runPending();
        }
        elapsed = end;
    }

    /// Reads what is watched, until `condition` holds; whether it did within a generous limit of real
    /// time. No virtual time passes.
    bool waitUntil(const std::function<bool()>& condition) {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        for (runPending(); !condition(); runPending()) {
            readWatched();
            if (std::chrono::steady_clock::now() > limit)
                return false;
            if (posted.empty())
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return true;
    }

    /// Runs the tasks of the descriptors that there is something to read from.
    void readWatched() {
        for (const auto& [descriptor, task] : std::list(watched)) {
            pollfd state{descriptor, POLLIN, 0};
            if (::poll(&state, 1, 0) == 1)
                task();
        }
    }

    /// The repeating timers and delayed tasks that are still to come.
    [[nodiscard]] std::size_t pendingTimers() const { return scheduled.size(); }

  private:
    using Time = std::chrono::microseconds; // sums of seconds would not be exact

    struct Entry final : Timer {
        Entry(ManualRunLoop& loop, Time due, Time interval, Task task)
            : loop(loop), due(due), interval(interval), task(std::move(task)) {}

        void invalidate() override {
            std::erase_if(loop.scheduled, [this](const auto& entry) { return entry.get() == this; });
        }

        ManualRunLoop& loop;
        Time due;
        const Time interval; ///< zero is once
        const Task task;
    };

    std::shared_ptr<Entry> schedule(Seconds delay, Time interval, Task task) {
        const Time due = elapsed + std::chrono::round<Time>(delay);
        return scheduled.emplace_back(std::make_shared<Entry>(*this, due, interval, std::move(task)));
    }

    std::deque<Task> posted;
    std::list<std::shared_ptr<Entry>> scheduled;
    std::list<std::shared_ptr<Entry>> byClock;
    std::list<std::pair<int, Task>> watched;
    Moment start = RunLoop::now();
    Time elapsed{0};
    const std::thread::id home = std::this_thread::get_id();
};

} // namespace velloren
