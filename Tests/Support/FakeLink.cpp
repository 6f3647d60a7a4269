#include "Tests/Support/FakeLink.h"

#include <utility>

namespace velloren {

/// A service or an endpoint, what it serves, and the connections to it.
struct FakeLink::Far {
    std::optional<ExportedInterface> interface;
    std::vector<FakeConnection*> connected;
};

/// Outlives its connection, as the calls of a real one do.
class FakeLink::FakeChannel final : public Channel {
  public:
    FakeChannel(std::shared_ptr<Far> far, std::string interface, Connection::ErrorHandler failed)
        : far(std::move(far)), interface(std::move(interface)), failed(std::move(failed)) {}

    void call(const std::string& method, Arguments arguments, Reply reply) override {
        if (const std::string error = "org.freedesktop.DBus.Error."; !far->interface)
            failed(error + "Disconnected: nobody is there");
        else if (far->interface->name != interface || !far->interface->methods.contains(method))
            failed(error + "UnknownMethod: no such method");
        else
            far->interface->methods.at(method).handler(arguments, reply);
    }

    void send(const std::string& method, Arguments arguments) override {
        FakeChannel(far, interface, [](const std::string&) {}).call(method, std::move(arguments), [](auto) {
        });
    }

  private:
    std::shared_ptr<Far> far;
    std::string interface;
    Connection::ErrorHandler failed;
};

class FakeLink::FakeConnection final : public Connection {
  public:
    FakeConnection(FakeLink& link, const std::string& place)
        : link(link), far(link.farEnd(place)), place(place) {
        ++link.openConnections;
    }

    ~FakeConnection() override {
        std::erase(far->connected, this);
        --link.openConnections;
    }

    void setRemoteObjectInterface(RemoteInterface newInterface) override {
        interface = std::move(newInterface);
    }

    void setInterruptionHandler(Handler handler) override { interruption = std::move(handler); }

    void setInvalidationHandler(Handler handler) override { invalidation = std::move(handler); }

    void resume() override {
        if (far->interface)
            far->connected.push_back(this);
        else if (invalidation)
            invalidation();
    }

    void interrupt() const {
        if (interruption)
            interruption();
    }

    std::shared_ptr<RemoteObject> remoteObjectProxy() override {
        return remoteObjectProxyWithErrorHandler([](const std::string&) {});
    }

    std::shared_ptr<RemoteObject> remoteObjectProxyWithErrorHandler(ErrorHandler handler) override {
        if (!interface.makeProxy)
            return nullptr;
        if (!link.conforming)
            return std::make_shared<RemoteObject>();
        return interface.makeProxy(std::make_shared<FakeChannel>(far, interface.name, std::move(handler)));
    }

    [[nodiscard]] std::string description() const override { return "<Connection: " + place + ">"; }

  private:
    FakeLink& link;
    std::shared_ptr<Far> far;
    std::string place;
    Handler interruption;
    Handler invalidation;
    RemoteInterface interface;
};

class FakeLink::FakeListener final : public Listener {
  public:
    explicit FakeListener(FakeLink& link) : link(link) {}

    void setDelegate(ListenerDelegate* newDelegate) override { delegate = newDelegate; }

    void resume() override {
        if (!link.hasRuntimeFolder)
            return;
        place = Endpoint::ofSocketPath("/run/user/1000/velloren/fake.socket");
        link.listenerDelegate = delegate;
    }

    [[nodiscard]] std::optional<Endpoint> endpoint() const override { return place; }

  private:
    FakeLink& link;
    ListenerDelegate* delegate = nullptr;
    std::optional<Endpoint> place;
};

std::shared_ptr<FakeLink::Far> FakeLink::farEnd(const std::string& place) {
    return places.try_emplace(place, std::make_shared<Far>()).first->second;
}

void FakeLink::serve(const std::string& place, ExportedInterface interface) {
    farEnd(place)->interface = std::move(interface);
}

void FakeLink::serve(const Endpoint& endpoint, ExportedInterface interface) {
    serve(endpoint.address(), std::move(interface));
}

void FakeLink::stop(const Endpoint& endpoint) {
    const auto far = farEnd(endpoint.address());
    far->interface.reset();
    for (const FakeConnection* connection : std::exchange(far->connected, {}))
        connection->interrupt();
}

std::unique_ptr<Connection> FakeLink::connectionToService(const std::string& serviceName) {
    return hasBus ? std::make_unique<FakeConnection>(*this, serviceName) : nullptr;
}

std::unique_ptr<Connection> FakeLink::connectionToEndpoint(const Endpoint& endpoint) {
    return std::make_unique<FakeConnection>(*this, endpoint.address());
}

std::unique_ptr<Listener> FakeLink::anonymousListener() {
    return hasListeners ? std::make_unique<FakeListener>(*this) : nullptr;
}

} // namespace velloren
