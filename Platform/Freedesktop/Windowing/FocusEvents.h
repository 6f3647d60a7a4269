#pragma once

#include "Platform/Desktop/GlobalEvents.h"

#include <QElapsedTimer>
#include <QObject>

namespace velloren {

/// Global events for Wayland sessions, where nobody is told of presses outside one's own windows: the loss of
/// the keyboard's focus to another application stands for a press of the left button there.
class FocusEvents final : public QObject, public GlobalEvents {
    Q_OBJECT

  public:
    FocusEvents();

    Subscription addMonitorForEventsMatchingMask(EventMask mask, Handler handler) override;
    /// Nothing tells of the click itself here: one that comes right after the loss counts as its cause.
    bool takeClickSeenByMonitor() override;

  private:
    void focusLost();

    GlobalEventMonitors monitors;
    QElapsedTimer lossSeenByMonitor;
};

} // namespace velloren
