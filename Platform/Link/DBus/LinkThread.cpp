#include "Platform/Link/DBus/LinkThread.h"

#include "Platform/Foundation/FatalError.h"

#include <systemd/sd-event.h>

#include <csignal>
#include <cstdint>
#include <malloc.h>
#include <pthread.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace velloren {

namespace {

/// Large buffers go back to the system when they are freed, whatever thread they were made on. Left alone,
/// the allocator keeps as much as it has once seen freed.
void keepNoLargeBuffers() {
    constexpr int large = 4 << 20;
    mallopt(M_MMAP_THRESHOLD, large);
    mallopt(M_TRIM_THRESHOLD, large);
}

} // namespace

LinkThread::LinkThread() : wakeUp(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (wakeUp < 0 || sd_event_new(&eventLoop) < 0)
        fatalError("the link's event loop could not be made");
    keepNoLargeBuffers();
}

LinkThread::~LinkThread() {
    if (thread.joinable()) {
        post([this] { sd_event_exit(eventLoop, 0); });
        thread.join();
    }
    sd_event_unref(eventLoop);
    close(wakeUp);
}

void LinkThread::post(Task task) {
    const std::scoped_lock lock(mutex);
    tasks.push_back(std::move(task));
    if (!thread.joinable())
        thread = std::thread([this] { run(); });
    const std::uint64_t one = 1;
    if (write(wakeUp, &one, sizeof one) != sizeof one)
        fatalError("the link's thread could not be woken");
}

void LinkThread::run() {
    pthread_setname_np(pthread_self(), "velloren-link");
    const auto wokenUp = [](sd_event_source*, int descriptor, std::uint32_t, void* self) {
        std::uint64_t count = 0;
        if (read(descriptor, &count, sizeof count) == sizeof count)
            static_cast<LinkThread*>(self)->runTasks();
        return 0;
    };
    if (sd_event_add_io(eventLoop, nullptr, wakeUp, EPOLLIN, wokenUp, this) < 0)
        fatalError("the link's event loop could not be made");
    sd_event_loop(eventLoop);
}

void LinkThread::runTasks() {
    std::deque<Task> due;
    {
        const std::scoped_lock lock(mutex);
        due.swap(tasks);
    }
    for (const Task& task : due)
        task();
}

} // namespace velloren
