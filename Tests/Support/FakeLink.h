#pragma once

#include "Platform/Link/Link.h"

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace velloren {

/// A link within the test: what services and endpoints serve is an interface that the test registers. Calls
/// arrive when the test lets them, in order, on the calling thread.
class FakeLink final : public Link {
  public:
    struct Far;
    struct Near;

    FakeLink();
    ~FakeLink() override;

    /// What the service or endpoint serves; replaces what it served before.
    void serve(const std::string& serviceName, ExportedInterface interface);
    void serve(const Endpoint& endpoint, ExportedInterface interface);
    /// Nobody is there any more: its connections are interrupted, new ones cannot be made.
    void stop(const Endpoint& endpoint);

    /// Delivers the calls made so far, their answers, and the events of connections, until nothing is left.
    void deliver();

    /// Delivers as it comes, without `deliver`; the default.
    void setImmediate(bool immediate) { deliversAtOnce = immediate; }

    /// No connection to a service can be made.
    bool hasBus = true;
    /// Proxies serve no interface that anybody asks for.
    bool conforming = true;
    /// Listeners: whether there are any, and whether they find a place for their socket.
    bool hasListeners = true;
    bool hasRuntimeFolder = true;

    /// The names and addresses connected to, in order.
    std::vector<std::string> connectionsMade;
    /// The connections that were not released.
    int openConnections = 0;
    /// The delegate of the latest listener that was resumed.
    ListenerDelegate* listenerDelegate = nullptr;

    std::unique_ptr<Connection> connectionToService(const std::string& serviceName) override;
    std::unique_ptr<Connection> connectionToEndpoint(const Endpoint& endpoint) override;
    std::unique_ptr<Listener> anonymousListener() override;

    /// Queues, and delivers where that is at once.
    void post(std::function<void()> task);

  private:
    std::shared_ptr<Far> farEnd(const std::string& place);

    std::map<std::string, std::shared_ptr<Far>> places;
    std::deque<std::function<void()>> queue;
    bool deliversAtOnce = true;
    bool delivering = false;
};

} // namespace velloren
