#pragma once

#include "Platform/Desktop/GlobalEvents.h"

#include <QElapsedTimer>
#include <QObject>

namespace velloren {

/// Global events for Wayland sessions whose compositor has no layer shell. Nobody is told there of presses
/// outside one's own windows: the loss of the keyboard's focus to another application stands for a press of
/// the left button. Presses that leave the focus where it is go unnoticed, as on the desktop itself.
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
