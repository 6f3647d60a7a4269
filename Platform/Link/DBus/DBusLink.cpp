#include "Platform/Link/DBus/DBusLink.h"

#include "Platform/Link/DBus/DBusListener.h"

#include <utility>

namespace velloren {

DBusLink::DBusLink() : DBusLink(Options()) {}

DBusLink::DBusLink(const Options& options) : options(options) {}

DBusLink::~DBusLink() {
    while (!open.empty())
        std::shared_ptr(*open.begin())->close();
}

std::shared_ptr<Connection> DBusLink::connectionToService(const std::string& serviceName) {
    return connectionTo(serviceName);
}

std::shared_ptr<Connection> DBusLink::connectionToEndpoint(const Endpoint& endpoint) {
    return connectionTo(endpoint);
}

std::unique_ptr<Listener> DBusLink::anonymousListener() {
    return std::make_unique<DBusListener>(loop);
}

std::shared_ptr<Connection> DBusLink::connectionTo(DBusConnection::FarEnd farEnd) {
    const auto connection =
        std::make_shared<DBusConnection>(loop, open, std::move(farEnd), options.callTimeout);
    // It goes on for its last calls when its owners have gone.
    return {connection.get(), [connection](Connection*) { connection->release(); }};
}

} // namespace velloren
