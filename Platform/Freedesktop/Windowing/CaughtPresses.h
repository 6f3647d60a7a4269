#pragma once

#include "Platform/Desktop/GlobalEvents.h"

#include <QPoint>

namespace velloren {

/// What takes the presses outside a popover while it is shown. Main thread only.
class PressTaker {
  public:
    using Handler = std::function<void(Qt::MouseButton, QPoint)>;

    PressTaker() = default;
    PressTaker(const PressTaker&) = delete;
    PressTaker& operator=(const PressTaker&) = delete;

    /// Is told of each, with its place on the whole desktop.
    virtual void setPressHandler(Handler handler) = 0;

  protected:
    ~PressTaker() = default;
};

/// Global events where a popover comes with surfaces that take the presses outside it: there are none unless
/// it is shown, and nobody else gets them. Main thread only.
class CaughtPresses final : public GlobalEvents {
  public:
    /// The taker outlives this.
    explicit CaughtPresses(PressTaker& taker);
    ~CaughtPresses() override;

    Subscription addMonitorForEventsMatchingMask(EventMask mask, Handler handler) override;

    /// Never: the bar does not get such a press.
    [[nodiscard]] bool takeClickSeenByMonitor() override { return false; }

  private:
    void pressed(Qt::MouseButton button, QPoint place);

    PressTaker& taker;
    GlobalEventMonitors monitors;
};

} // namespace velloren
