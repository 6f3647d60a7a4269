#pragma once

#include "Platform/Foundation/RunLoop.h"

#include <QObject>

namespace velloren {

/// The main run loop on Qt's event loop. Made on the main thread after the application object.
class QtRunLoop final : public RunLoop {
  public:
    void post(Task task) override;
    void postAfter(Seconds delay, Task task) override;
    std::shared_ptr<Timer> scheduleRepeating(Seconds interval, Task task) override;
    Subscription postAt(Moment moment, Task task) override;
    Subscription watch(int descriptor, Task task) override;
    [[nodiscard]] bool isCurrent() const override;

  private:
    QObject context;
};

} // namespace velloren
