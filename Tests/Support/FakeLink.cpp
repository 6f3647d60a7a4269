#include "Tests/Support/FakeLink.h"

#include <optional>
#include <utility>

namespace velloren {

/// A service or an endpoint and what it serves.
struct FakeLink::Far {
    std::optional<ExportedInterface> interface;
    std::vector<std::weak_ptr<Near>> connected;
};

/// A connection's state, which outlives the connection while calls are under way.
struct FakeLink::Near {
    std::shared_ptr<Far> far;
    Connection::Handler interruption;
    Connection::Handler invalidation;
    bool ended = false;

    void happened(bool interrupted) {
        if (std::exchange(ended, true))
            return;
        if (const auto handler = interrupted ? interruption : invalidation)
            handler();
    }
};

namespace {

class FakeChannel final : public Channel {
  public:
    FakeChannel(FakeLink& link, std::shared_ptr<FakeLink::Near> near, std::string interface,
                Connection::ErrorHandler failed)
        : link(link), near(std::move(near)), interface(std::move(interface)), failed(std::move(failed)) {}

    void call(const std::string& method, Arguments arguments, Reply reply) override {
        link.post([&link = link, far = near->far, name = interface, failed = failed, method,
                   arguments = std::move(arguments), reply = std::move(reply)] {
            const auto fail = [&](const char* error) {
                if (failed)
                    failed(error);
            };
            if (!far->interface)
                return fail("org.freedesktop.DBus.Error.Disconnected: nobody is there");
            if (far->interface->name != name || !far->interface->methods.contains(method))
                return fail("org.freedesktop.DBus.Error.UnknownMethod: no such method");
            const auto& known = far->interface->methods.at(method);
            if (known.argumentCount != arguments.size())
                return fail("org.freedesktop.DBus.Error.InvalidArgs: other arguments");
            known.handler(arguments, [&link = link, reply](Value value) {
                link.post([reply, value = std::move(value)] { reply(value); });
            });
        });
    }

    void send(const std::string& method, Arguments arguments) override {
        link.post([far = near->far, method, arguments = std::move(arguments)] {
            if (far->interface && far->interface->methods.contains(method))
                far->interface->methods.at(method).handler(arguments, [](const Value&) {});
        });
    }

  private:
    FakeLink& link;
    std::shared_ptr<FakeLink::Near> near;
    std::string interface;
    Connection::ErrorHandler failed;
};

class FakeConnection final : public Connection {
  public:
    FakeConnection(FakeLink& link, std::shared_ptr<FakeLink::Near> near, std::string place)
        : link(link), near(std::move(near)), place(std::move(place)) {
        ++link.openConnections;
    }

    ~FakeConnection() override {
        near->ended = true;
        --link.openConnections;
    }

    void setRemoteObjectInterface(RemoteInterface newInterface) override {
        interface = std::move(newInterface);
    }

    void setInterruptionHandler(Handler handler) override { near->interruption = std::move(handler); }

    void setInvalidationHandler(Handler handler) override { near->invalidation = std::move(handler); }

    void resume() override {
        link.post([near = near] {
            near->far->connected.push_back(near);
            if (!near->far->interface)
                near->happened(false);
        });
    }

    std::shared_ptr<RemoteObject> remoteObjectProxy() override {
        return remoteObjectProxyWithErrorHandler(nullptr);
    }

    std::shared_ptr<RemoteObject> remoteObjectProxyWithErrorHandler(ErrorHandler handler) override {
        if (!interface.makeProxy)
            return nullptr;
        if (!link.conforming)
            return std::make_shared<RemoteObject>();
        return interface.makeProxy(
            std::make_shared<FakeChannel>(link, near, interface.name, std::move(handler)));
    }

    [[nodiscard]] std::string description() const override { return "<Connection: " + place + ">"; }

  private:
    FakeLink& link;
    std::shared_ptr<FakeLink::Near> near;
    std::string place;
    RemoteInterface interface;
};

class FakeListener final : public Listener {
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

} // namespace

FakeLink::FakeLink() = default;

FakeLink::~FakeLink() = default;

std::shared_ptr<FakeLink::Far> FakeLink::farEnd(const std::string& place) {
    auto& far = places[place];
    if (!far)
        far = std::make_shared<Far>();
    return far;
}

void FakeLink::serve(const std::string& serviceName, ExportedInterface interface) {
    farEnd(serviceName)->interface = std::move(interface);
}

void FakeLink::serve(const Endpoint& endpoint, ExportedInterface interface) {
    serve(endpoint.address(), std::move(interface));
}

void FakeLink::stop(const Endpoint& endpoint) {
    const auto far = std::exchange(places[endpoint.address()], nullptr);
    if (!far)
        return;
    far->interface.reset();
    for (const auto& near : far->connected) {
        if (const auto connection = near.lock())
            post([connection] { connection->happened(true); });
    }
}

void FakeLink::post(std::function<void()> task) {
    queue.push_back(std::move(task));
    if (deliversAtOnce && !delivering)
        deliver();
}

void FakeLink::deliver() {
    delivering = true;
    while (!queue.empty()) {
        const auto task = std::move(queue.front());
        queue.pop_front();
        task();
    }
    delivering = false;
}

std::unique_ptr<Connection> FakeLink::connectionToService(const std::string& serviceName) {
    if (!hasBus)
        return nullptr;
    connectionsMade.push_back(serviceName);
    return std::make_unique<FakeConnection>(*this, std::make_shared<Near>(Near{farEnd(serviceName), {}, {}}),
                                            serviceName);
}

std::unique_ptr<Connection> FakeLink::connectionToEndpoint(const Endpoint& endpoint) {
    connectionsMade.push_back(endpoint.address());
    return std::make_unique<FakeConnection>(
        *this, std::make_shared<Near>(Near{farEnd(endpoint.address()), {}, {}}), endpoint.address());
}

std::unique_ptr<Listener> FakeLink::anonymousListener() {
    return hasListeners ? std::make_unique<FakeListener>(*this) : nullptr;
}

} // namespace velloren
