#pragma once

#include "Platform/Link/Link.h"

#include <chrono>
#include <memory>

namespace velloren {

class LinkThread;
class BusConnections;

/// The link over D-Bus: services on the session bus, each through a bus connection of its own, and endpoints
/// as peers. Everything happens on one thread of the link's own, without ever waiting there for a peer.
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

    [[nodiscard]] std::unique_ptr<Connection> connectionToService(const std::string& serviceName) override;
    [[nodiscard]] std::unique_ptr<Connection> connectionToEndpoint(const Endpoint& endpoint) override;
    [[nodiscard]] std::unique_ptr<Listener> anonymousListener() override;

  private:
    Options options;
    std::shared_ptr<BusConnections> connections;
    std::unique_ptr<LinkThread> thread;
};

} // namespace velloren
