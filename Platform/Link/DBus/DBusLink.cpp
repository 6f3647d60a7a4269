#include "Platform/Link/DBus/DBusLink.h"

#include "Platform/Link/DBus/DBusConnection.h"
#include "Platform/Link/DBus/DBusListener.h"
#include "Platform/Link/DBus/LinkThread.h"

#include <systemd/sd-bus.h>

namespace velloren {

DBusLink::DBusLink() : DBusLink(Options()) {}

DBusLink::DBusLink(const Options& options)
    : options(options), connections(std::make_shared<BusConnections>()),
      thread(std::make_unique<LinkThread>()) {}

DBusLink::~DBusLink() {
    thread->post([connections = connections] { connections->closeAll(); });
}

std::unique_ptr<Connection> DBusLink::connectionToService(const std::string& serviceName) {
    sd_bus* started = nullptr;
    if (sd_bus_open_user_with_description(&started, "velloren-link") < 0)
        return nullptr;
    auto bus = std::make_shared<OutgoingBus>(*thread, RunLoop::main(), *connections, options.callTimeout);
    // Taken over at once, so that it is closed even when nobody resumes the connection.
    thread->post([bus, started] { bus->adopt(started); });
    return std::make_unique<DBusConnection>(*thread, bus, serviceName,
                                            "<Connection: service " + serviceName + ">", nullptr);
}

std::unique_ptr<Connection> DBusLink::connectionToEndpoint(const Endpoint& endpoint) {
    auto bus = std::make_shared<OutgoingBus>(*thread, RunLoop::main(), *connections, options.callTimeout);
    return std::make_unique<DBusConnection>(*thread, bus, std::string(),
                                            "<Connection: endpoint " + endpoint.address() + ">",
                                            [endpoint](OutgoingBus& started) { started.connect(endpoint); });
}

std::unique_ptr<Listener> DBusLink::anonymousListener() {
    return std::make_unique<DBusListener>(*thread);
}

} // namespace velloren
