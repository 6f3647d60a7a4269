#pragma once

#include "Platform/Link/Link.h"

namespace velloren {

/// A link within the test: what services and endpoints serve is an interface that the test registers. Calls,
/// answers and the events of connections arrive at once, on the calling thread.
class FakeLink final : public Link {
  public:
    /// What the service or endpoint serves; replaces what it served before.
    void serve(const std::string& place, ExportedInterface interface);
    void serve(const Endpoint& endpoint, ExportedInterface interface);
    /// Nobody is there any more: its connections are interrupted, new ones cannot be made.
    void stop(const Endpoint& endpoint);
    /// Whether who is there lets connections in; calls wait as long as not.
    void setLetsIn(const Endpoint& endpoint, bool letsIn);

    /// No connection to a service can be made.
    bool hasBus = true;
    /// Proxies serve no interface that anybody asks for.
    bool conforming = true;
    /// Whether there are listeners.
    bool hasListeners = true;

    /// The connections that were not released.
    int openConnections = 0;
    /// The delegate of the latest listener that was resumed.
    ListenerDelegate* listenerDelegate = nullptr;

    std::unique_ptr<Connection> connectionToService(const std::string& serviceName) override;
    std::unique_ptr<Connection> connectionToEndpoint(const Endpoint& endpoint) override;
    std::unique_ptr<Listener> anonymousListener() override;

  private:
    struct Far;
    struct Near;
    class FakeChannel;
    class FakeConnection;
    class FakeListener;

    std::shared_ptr<Far> farEnd(const std::string& place);

    std::map<std::string, std::shared_ptr<Far>> places;
};

} // namespace velloren
