#include "Platform/Link/DBus/BusLoop.h"

#include "Platform/Foundation/FatalError.h"
#include "Platform/Foundation/RunLoop.h"

#include <systemd/sd-event.h>

#include <utility>

namespace velloren {

BusLoop::BusLoop() {
    if (sd_event_new(&loop) < 0)
        fatalError("the link's event loop could not be made");
    readiness = RunLoop::main().watch(sd_event_get_fd(loop), [this] { turn(); });
}

BusLoop::~BusLoop() {
    readiness = {};
    sd_event_unref(loop);
}

void BusLoop::wakeUp() {
    if (std::exchange(*turnIsDue, true))
        return;
    RunLoop::main().post([this, due = std::weak_ptr(turnIsDue)] {
        if (!due.expired())
            turn();
    });
}

void BusLoop::turn() {
    *turnIsDue = false;
    const int count = sd_event_run(loop, 0);
    if (count < 0)
        fatalError("the link's event loop failed");
    if (count > 0)
        wakeUp();
}

} // namespace velloren
