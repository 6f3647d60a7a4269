#pragma once

#include "Platform/Link/DBus/BusLoop.h"
#include "Platform/Link/DBus/DBusConnection.h"
#include "Platform/Link/Link.h"

#include <chrono>
#include <memory>

namespace velloren {

/// The link over D-Bus: services on the session bus, each through a bus connection of its own, and endpoints
/// as peers. Outlives its connections and listeners.
class DBusLink final : public Link {
  public:
    struct Options {
        /// For how long a call waits for its answer.
        std::chrono::milliseconds callTimeout{25000};
    };

    DBusLink();
    explicit DBusLink(const Options& options);
    /// Sends what was called on services before, and closes everything.
    ~DBusLink() override;

    [[nodiscard]] std::shared_ptr<Connection> connectionToService(const std::string& serviceName) override;
    [[nodiscard]] std::shared_ptr<Connection> connectionToEndpoint(const Endpoint& endpoint) override;
    [[nodiscard]] std::unique_ptr<Listener> anonymousListener() override;

  private:
    [[nodiscard]] std::shared_ptr<Connection> connectionTo(DBusConnection::FarEnd farEnd);

    Options options;
    BusLoop loop;
    DBusConnection::Keeper open;
};

} // namespace velloren
