#pragma once

#include "Platform/Desktop/GlobalEvents.h"

#include <QAbstractNativeEventFilter>
#include <QPoint>
#include <QTimer>

#include <cstdint>

struct xcb_connection_t;

namespace velloren {

/// Global events from raw XInput 2 events of the root window, which arrive whoever holds a grab. Nothing is
/// selected, and so no event wakes this process, while there is no monitor; the one exception is the rest of
/// a click that a monitor was told of. A monitor is told of no press from before it was added, such as that
/// of the click for which it was. Without an X display there are no events.
class XInputEvents final : public GlobalEvents, private QAbstractNativeEventFilter {
  public:
    XInputEvents();
    ~XInputEvents() override;

    Subscription addMonitorForEventsMatchingMask(EventMask mask, Handler handler) override;
    bool takeClickSeenByMonitor() override;

  private:
    enum class Click { NotSeen, Pressed, Released };

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;
    void pressed(unsigned button, std::uint32_t sequence);
    void released(unsigned button);
    void setClick(Click next);
    void selectWhatIsNeeded();

    GlobalEventMonitors monitors;
    Click click = Click::NotSeen;
    unsigned clickButton = 0;
    QPoint clickPlace;
    QTimer clickEnd;
    xcb_connection_t* connection = nullptr;
    std::uint32_t rootWindow = 0;
    std::uint8_t inputOpcode = 0;
    std::uint32_t selected = 0;
    std::uint32_t monitoredFrom = 0; ///< the number of a request
};

} // namespace velloren
