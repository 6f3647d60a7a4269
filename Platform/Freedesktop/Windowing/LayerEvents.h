#pragma once

#include "Platform/Desktop/GlobalEvents.h"

#include <QPoint>

namespace velloren {

class LayerWindowServer;

/// Global events where a popover comes with surfaces that take the presses outside it: there are none unless
/// it is shown, and nobody else gets them. Main thread only.
class LayerEvents final : public GlobalEvents {
  public:
    /// The server outlives this.
    explicit LayerEvents(LayerWindowServer& server);
    ~LayerEvents() override;

    Subscription addMonitorForEventsMatchingMask(EventMask mask, Handler handler) override;

    /// Never: the bar does not get such a press.
    [[nodiscard]] bool takeClickSeenByMonitor() override { return false; }

  private:
    void pressed(Qt::MouseButton button, QPoint place);

    LayerWindowServer& server;
    GlobalEventMonitors monitors;
};

} // namespace velloren
