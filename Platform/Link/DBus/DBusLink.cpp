#include "Platform/Link/DBus/DBusLink.h"

#include "Platform/Link/DBus/DBusConnection.h"
#include "Platform/Link/DBus/DBusListener.h"

#include <utility>

namespace velloren {

DBusLink::DBusLink() : DBusLink(Options()) {}

DBusLink::DBusLink(const Options& options) : options(options) {}

DBusLink::~DBusLink() {
    while (!open.empty())
        std::shared_ptr(*open.begin())->close();
}

std::unique_ptr<Connection> DBusLink::connectionToService(const std::string& serviceName) {
    return std::make_unique<DBusConnection>(busTo(serviceName), "<Connection: service " + serviceName + ">");
}

std::unique_ptr<Connection> DBusLink::connectionToEndpoint(const Endpoint& endpoint) {
    return std::make_unique<DBusConnection>(busTo(endpoint),
                                            "<Connection: endpoint " + endpoint.address() + ">");
}

std::unique_ptr<Listener> DBusLink::anonymousListener() {
    return std::make_unique<DBusListener>(loop);
}

std::shared_ptr<OutgoingBus> DBusLink::busTo(OutgoingBus::FarEnd farEnd) {
    return std::make_shared<OutgoingBus>(loop, open, std::move(farEnd), options.callTimeout);
}

} // namespace velloren
