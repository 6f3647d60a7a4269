#include "Tests/Support/FakeLink.h"

#include <utility>

namespace velloren {

/// A service or an endpoint, what it serves, and the connections to it.
struct FakeLink::Far {
    std::optional<ExportedInterface> interface;
    bool letsIn = true;
    std::vector<FakeConnection*> connected;
};

/// The calls of a connection; outlive it, as those of a real one do.
struct FakeLink::Near {
    struct Call {
        Connection::Undelivered what;
        bool isRequest;
        Connection::ErrorHandler failed;
        Channel::Reply reply;
    };

    std::shared_ptr<Far> far;
    std::string interface {};
    bool isResumed = false;
    bool stands = false;
    bool hasEnded = false;
    bool isReleased = false;
    std::vector<Call> waiting{};

    void settle() {
        if (hasEnded)
            return fail([this](const Call& call) { return isReleased || !call.isRequest; });
        stands = stands || (isResumed && far->letsIn);
        while (stands && !waiting.empty()) {
            const Call oldest = waiting.front();
            waiting.erase(waiting.begin());
            deliver(oldest);
        }
    }

    void fail(const std::function<bool(const Call&)>& isHopeless) {
        std::erase_if(waiting, [&](const Call& call) {
            if (isHopeless(call))
                call.failed("org.freedesktop.DBus.Error.Disconnected: nobody is there");
            return isHopeless(call);
        });
    }

    void deliver(const Call& call) const {
        const auto& [method, arguments] = call.what;
        if (far->interface->name != interface || !far->interface->methods.contains(method))
            call.failed("org.freedesktop.DBus.Error.UnknownMethod: no such method");
        else
            far->interface->methods.at(method).handler(arguments, call.reply);
    }
};

class FakeLink::FakeChannel final : public Channel {
  public:
    FakeChannel(std::shared_ptr<Near> near, Connection::ErrorHandler failed)
        : near(std::move(near)), failed(std::move(failed)) {}

    void call(const std::string& method, Arguments arguments, Reply reply) override {
        add({{method, std::move(arguments)}, false, failed, std::move(reply)});
    }

    void request(const std::string& method, Arguments arguments) override {
        add({{method, std::move(arguments)}, true, failed, [](auto) {}});
    }

    void send(const std::string& method, Arguments arguments) override {
        add({{method, std::move(arguments)}, false, [](const std::string&) {}, [](auto) {}});
    }

  private:
    void add(Near::Call call) {
        near->waiting.push_back(std::move(call));
        near->settle();
    }

    std::shared_ptr<Near> near;
    Connection::ErrorHandler failed;
};

class FakeLink::FakeConnection final : public Connection {
  public:
    FakeConnection(FakeLink& link, const std::string& place)
        : link(link), near(std::make_shared<Near>(Near{link.farEnd(place)})), place(place) {
        ++link.openConnections;
    }

    ~FakeConnection() override {
        std::erase(near->far->connected, this);
        near->isReleased = true;
        near->settle();
        --link.openConnections;
    }

    void setRemoteObjectInterface(RemoteInterface newInterface) override {
        interface = std::move(newInterface);
        near->interface = interface.name;
    }

    void setInterruptionHandler(Handler handler) override { interruption = std::move(handler); }

    void setInvalidationHandler(Handler handler) override { invalidation = std::move(handler); }

    void resume() override {
        near->isResumed = true;
        near->hasEnded = !near->far->interface;
        if (!near->hasEnded)
            near->far->connected.push_back(this);
        else if (invalidation)
            invalidation();
        near->settle();
    }

    void interrupt() const {
        near->hasEnded = true;
        if (const auto& handler = near->stands ? interruption : invalidation)
            handler();
        near->settle();
    }

    void settle() const { near->settle(); }

    std::vector<Undelivered> takeBack() override {
        near->fail([](const Near::Call& call) { return !call.isRequest; });
        std::vector<Undelivered> requests;
        for (const Near::Call& call : std::exchange(near->waiting, {}))
            requests.push_back(call.what);
        return requests;
    }

    std::shared_ptr<RemoteObject> remoteObjectProxy() override {
        return remoteObjectProxyWithErrorHandler([](const std::string&) {});
    }

    std::shared_ptr<RemoteObject> remoteObjectProxyWithErrorHandler(ErrorHandler handler) override {
        if (!interface.makeProxy)
            return nullptr;
        if (!link.conforming)
            return std::make_shared<RemoteObject>();
        return interface.makeProxy(std::make_shared<FakeChannel>(near, std::move(handler)));
    }

    [[nodiscard]] std::string description() const override { return "<Connection: " + place + ">"; }

  private:
    FakeLink& link;
    std::shared_ptr<Near> near;
    std::string place;
    Handler interruption;
    Handler invalidation;
    RemoteInterface interface;
};

class FakeLink::FakeListener final : public Listener {
  public:
    explicit FakeListener(FakeLink& link) : link(link) {}

    void setDelegate(ListenerDelegate* newDelegate) override { delegate = newDelegate; }

    void resume() override { link.listenerDelegate = delegate; }

    [[nodiscard]] std::optional<Endpoint> endpoint() const override {
        return Endpoint::ofSocketPath("/run/user/1000/velloren/fake.socket");
    }

  private:
    FakeLink& link;
    ListenerDelegate* delegate = nullptr;
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

void FakeLink::setLetsIn(const Endpoint& endpoint, bool letsIn) {
    const auto far = farEnd(endpoint.address());
    far->letsIn = letsIn;
    for (const FakeConnection* connection : far->connected)
        connection->settle();
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
