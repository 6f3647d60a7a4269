#pragma once

#include "Platform/Desktop/GlobalEvents.h"

#include <Qt>

namespace velloren {

/// Global events where a popover comes with surfaces that take the presses outside it: there are none unless
/// it is shown, and nobody else gets them. Main thread only.
class OverlayEvents final : public GlobalEvents {
  public:
    Subscription addMonitorForEventsMatchingMask(EventMask mask, Handler handler) override;

    /// Never: the bar does not get such a press.
    [[nodiscard]] bool takeClickSeenByMonitor() override { return false; }

    /// Such a surface was pressed, at that place on the whole desktop.
    void handlePress(Qt::MouseButton button, QPoint place);

  private:
    GlobalEventMonitors monitors;
};

} // namespace velloren
