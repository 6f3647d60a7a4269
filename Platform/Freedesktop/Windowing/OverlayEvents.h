#pragma once

#include "Platform/Desktop/GlobalEvents.h"
#include "Platform/Freedesktop/Windowing/PressSource.h"

namespace velloren {

/// Global events where a popover comes with surfaces that take the presses outside it: there are none unless
/// it is shown, and nobody else gets them. Main thread only.
class OverlayEvents final : public GlobalEvents {
  public:
    /// The source outlives this.
    explicit OverlayEvents(PressSource& source);
    ~OverlayEvents() override;

    Subscription addMonitorForEventsMatchingMask(EventMask mask, Handler handler) override;

    /// Never: the bar does not get such a press.
    [[nodiscard]] bool takeClickSeenByMonitor() override { return false; }

  private:
    void handlePress(Qt::MouseButton button, QPoint place);

    PressSource& source;
    GlobalEventMonitors monitors;
};

} // namespace velloren
