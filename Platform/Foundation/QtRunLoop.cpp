#include "Platform/Foundation/QtRunLoop.h"

#include "Platform/Foundation/ClockAlarm.h"

#include <QPointer>
#include <QSocketNotifier>
#include <QThread>
#include <QTimer>

#include <utility>

namespace velloren {

namespace {

std::chrono::milliseconds milliseconds(RunLoop::Seconds seconds) {
    return std::chrono::round<std::chrono::milliseconds>(seconds);
}

} // namespace

class QtRunLoop::RepeatingTimer final : public RunLoop::Timer,
                                        public std::enable_shared_from_this<RepeatingTimer> {
  public:
    RepeatingTimer(QtRunLoop& loop, Seconds interval, Task task) : loop(loop), task(std::move(task)) {
        QObject::connect(&timer, &QTimer::timeout, [this] { fire(); });
        timer.setTimerType(Qt::PreciseTimer);
        timer.start(milliseconds(interval));
    }

    void invalidate() override {
        timer.stop();
        // The timer may be invalidated by its own task, or by its last owner: it outlives this call.
        const auto self = shared_from_this();
        loop.scheduled.erase(self);
    }

  private:
    void fire() {
        const auto self = shared_from_this();
        task();
    }

    QtRunLoop& loop;
    Task task;
    QTimer timer;
};

QtRunLoop::~QtRunLoop() = default;

void QtRunLoop::post(Task task) {
    QMetaObject::invokeMethod(&context, std::move(task), Qt::QueuedConnection);
}

void QtRunLoop::postAfter(Seconds delay, Task task) {
    QTimer::singleShot(milliseconds(delay), Qt::PreciseTimer, &context, std::move(task));
}

std::shared_ptr<RunLoop::Timer> QtRunLoop::scheduleRepeating(Seconds interval, Task task) {
    auto timer = std::make_shared<RepeatingTimer>(*this, interval, std::move(task));
    scheduled.insert(timer);
    return timer;
}

Subscription QtRunLoop::postAt(Moment moment, Task task) {
    const auto alarm = std::make_shared<ClockAlarm>(*this, moment, std::move(task));
    return Subscription([alarm] { alarm->cancel(); });
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
