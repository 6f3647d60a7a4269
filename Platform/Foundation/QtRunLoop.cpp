#include "Platform/Foundation/QtRunLoop.h"

#include "Platform/Foundation/UniqueDescriptor.h"

#include <QPointer>
#include <QSocketNotifier>
#include <QThread>
#include <QTimer>

#include <sys/timerfd.h>
#include <utility>

namespace velloren {

namespace {

std::chrono::milliseconds milliseconds(RunLoop::Seconds seconds) {
    return std::chrono::round<std::chrono::milliseconds>(seconds);
}

class RepeatingTimer final : public RunLoop::Timer {
  public:
    explicit RepeatingTimer(QTimer* timer) : timer(timer) {}

    void invalidate() override {
        if (!timer)
            return;
        timer->stop();
        timer->deleteLater(); // its task may be what ends it
    }

  private:
    QPointer<QTimer> timer; ///< the loop's
};

} // namespace

void QtRunLoop::post(Task task) {
    QMetaObject::invokeMethod(&context, std::move(task), Qt::QueuedConnection);
}

void QtRunLoop::postAfter(Seconds delay, Task task) {
    QTimer::singleShot(milliseconds(delay), Qt::PreciseTimer, &context, std::move(task));
}

std::shared_ptr<RunLoop::Timer> QtRunLoop::scheduleRepeating(Seconds interval, Task task) {
    auto* timer = new QTimer(&context);
    QObject::connect(timer, &QTimer::timeout, &context, std::move(task));
    timer->setTimerType(Qt::PreciseTimer);
    timer->start(milliseconds(interval));
    return std::make_shared<RepeatingTimer>(timer);
}

Subscription QtRunLoop::postAt(Moment moment, Task task) {
    // Unlike Qt's timers this goes on while the machine is suspended, and ends when the clock is set.
    const auto clock =
        std::make_shared<UniqueDescriptor>(::timerfd_create(CLOCK_REALTIME, TFD_CLOEXEC | TFD_NONBLOCK));
    const auto seconds = std::chrono::floor<std::chrono::seconds>(moment);
    itimerspec time{};
    time.it_value.tv_sec = seconds.time_since_epoch().count();
    time.it_value.tv_nsec = std::chrono::nanoseconds(moment - seconds).count();
    constexpr int flags = TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET;
    if (::timerfd_settime(clock->get(), flags, &time, nullptr) != 0)
        return {};
    const auto arrival = std::make_shared<Subscription>();
    *arrival = watch(clock->get(), [arrival, clock, task = std::move(task)] {
        *arrival = {};
        task();
    });
    return Subscription([arrival] { *arrival = {}; });
}

Subscription QtRunLoop::watch(int descriptor, Task task) {
    auto* notifier = new QSocketNotifier(descriptor, QSocketNotifier::Read, &context);
    QObject::connect(notifier, &QSocketNotifier::activated, &context, std::move(task));
    return Subscription([watched = QPointer(notifier)] {
        if (!watched) // the loop went first
            return;
        watched->setEnabled(false);
        watched->deleteLater(); // its task may be what ends it
    });
}

bool QtRunLoop::isCurrent() const {
    return QThread::currentThread() == context.thread();
}

} // namespace velloren
