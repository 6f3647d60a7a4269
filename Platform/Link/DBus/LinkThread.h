#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

struct sd_event;

namespace velloren {

/// The link's own thread: an event loop on which every connection lives, so that none of them ever makes the
/// main thread wait. Starts with the first task; sleeps while nothing happens.
class LinkThread {
  public:
    using Task = std::function<void()>;

    LinkThread();
    LinkThread(const LinkThread&) = delete;
    LinkThread& operator=(const LinkThread&) = delete;
    /// Runs the tasks that are still queued, then ends the loop and waits for the thread.
    ~LinkThread();

    /// Runs `task` on the thread; tasks of one thread keep their order. Any thread.
    void post(Task task);

    /// The loop, for event sources. On this thread only.
    [[nodiscard]] sd_event* loop() const { return eventLoop; }

  private:
    void run();
    void runTasks();

    std::mutex mutex;
    std::deque<Task> tasks;
    int wakeUp = -1;
    sd_event* eventLoop = nullptr;
    std::thread thread;
};

} // namespace velloren
