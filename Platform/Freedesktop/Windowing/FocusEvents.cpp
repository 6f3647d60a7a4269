#include "Platform/Freedesktop/Windowing/FocusEvents.h"

#include <QCursor>
#include <QGuiApplication>

#include <chrono>
#include <utility>

namespace velloren {

namespace {

constexpr std::chrono::milliseconds longestClick{300};

}

FocusEvents::FocusEvents() {
    connect(qApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
        if (state != Qt::ApplicationActive)
            focusLost();
    });
}

Subscription FocusEvents::addMonitorForEventsMatchingMask(EventMask mask, Handler handler) {
    return monitors.add(mask, std::move(handler));
}

bool FocusEvents::takeClickSeenByMonitor() {
    const bool seen = lossSeenByMonitor.isValid() && !lossSeenByMonitor.hasExpired(longestClick.count());
    lossSeenByMonitor.invalidate();
    return seen;
}

void FocusEvents::focusLost() {
    const auto handlers = monitors.handlersFor(maskOf(EventType::LeftMouseDown));
    if (handlers.empty())
        return;
    lossSeenByMonitor.start();
    const Event event{EventType::LeftMouseDown, QCursor::pos()};
    for (const Handler& handler : handlers)
        handler(&event);
}

} // namespace velloren
