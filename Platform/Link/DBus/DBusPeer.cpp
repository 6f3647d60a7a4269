#include "Platform/Link/DBus/DBusPeer.h"

#include "Platform/Foundation/RunLoop.h"
#include "Platform/Link/DBus/DBusWire.h"

#include <systemd/sd-bus.h>

#include <utility>

namespace velloren {

std::shared_ptr<DBusPeer> DBusPeer::serve(BusLoop& loop, UniqueDescriptor connected,
                                          std::optional<ExportedInterface> exported,
                                          std::function<void()> gone) {
    std::shared_ptr<DBusPeer> peer(new DBusPeer(loop, std::move(gone)));
    if (!peer->start(std::move(connected)))
        return nullptr;
    if (exported) {
        peer->served = DBusExport::serve(peer->bus, std::move(*exported), [&loop] { loop.wakeUp(); });
        if (!peer->served)
            return nullptr;
    }
    loop.wakeUp();
    return peer;
}

DBusPeer::~DBusPeer() {
    served.reset();
    sd_bus_close_unref(bus);
}

bool DBusPeer::start(UniqueDescriptor connected) {
    sd_id128_t identity;
    if (sd_bus_new(&bus) < 0 || sd_bus_set_fd(bus, connected.get(), connected.get()) < 0)
        return false;
    (void)connected.release(); // the bus's now
    return sd_id128_randomize(&identity) >= 0 && sd_bus_set_server(bus, 1, identity) >= 0 &&
           sd_bus_set_connected_signal(bus, 1) >= 0 && sd_bus_start(bus) >= 0 &&
           sd_bus_add_filter(bus, nullptr, &DBusPeer::received, this) >= 0 &&
           sd_bus_attach_event(bus, loop.events(), SD_EVENT_PRIORITY_NORMAL) >= 0;
}

int DBusPeer::received(sd_bus_message* message, void* data, sd_bus_error*) {
    const auto later = [data](void (*what)(DBusPeer&)) {
        RunLoop::main().post([what, weak = static_cast<DBusPeer*>(data)->weak_from_this()] {
            if (const auto peer = weak.lock())
                what(*peer);
        });
    };
    if (wire::isLocalSignal(*message, "Connected"))
        later([](DBusPeer& peer) { peer.readOn(); });
    else if (wire::isLocalSignal(*message, "Disconnected"))
        later([](DBusPeer& peer) { peer.gone(); });
    return 0;
}

/// Calls that came together with the last word of the authentication have been read from the socket already:
/// nothing would tell of them before more arrives.
void DBusPeer::readOn() {
    if (sd_bus_process(bus, nullptr) <= 0)
        return;
    RunLoop::main().post([weak = weak_from_this()] {
        if (const auto peer = weak.lock())
            peer->readOn();
    });
}

} // namespace velloren
