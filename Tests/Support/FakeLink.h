#pragma once

#include "Platform/Link/Link.h"

#include <deque>
#include <utility>

namespace velloren {

/// A link within the test: what services and endpoints serve is an interface that the test registers. Calls,
/// answers and the events of connections arrive at once, on the calling thread. Of the link's contract it has
/// what the agent relies on; the whole of it is the business of the link over D-Bus.
class FakeLink final : public Link {
  public:
    /// Proxies serve no interface that anybody asks for.
    bool conforming = true;

    /// The connections that were not released.
    int openConnections = 0;
    /// The delegate of the latest listener that was resumed.
    ListenerDelegate* listenerDelegate = nullptr;

    /// What the service of that name, or the endpoint of that address, serves from now on.
    void serve(const std::string& place, ExportedInterface interface) {
        farEnd(place)->interface = std::move(interface);
    }

    /// Nobody is there any more: its connections are interrupted, new ones cannot be made.
    void stop(const Endpoint& endpoint) {
        const auto far = farEnd(endpoint.address());
        far->interface.reset();
        for (const FakeConnection* connection : std::exchange(far->connected, {}))
            connection->settle();
    }

    /// Whether who is there lets connections in; calls wait as long as not.
    void setLetsIn(const Endpoint& endpoint, bool letsIn) {
        const auto far = farEnd(endpoint.address());
        far->letsIn = letsIn;
        for (const FakeConnection* connection : far->connected)
            connection->settle();
    }

    std::shared_ptr<Connection> connectionToService(const std::string& serviceName) override {
        return std::make_unique<FakeConnection>(*this, serviceName);
    }

    std::shared_ptr<Connection> connectionToEndpoint(const Endpoint& endpoint) override {
        return std::make_unique<FakeConnection>(*this, endpoint.address());
    }

    std::unique_ptr<Listener> anonymousListener() override { return std::make_unique<FakeListener>(*this); }

  private:
    class FakeConnection;

    /// What a service or an endpoint serves, and the connections to it.
    struct Far {
        std::optional<ExportedInterface> interface;
        bool letsIn = true;
        std::vector<FakeConnection*> connected;
    };

    struct Call {
        std::string method;
        Channel::Arguments arguments;
        Channel::Reply reply;
        Channel::Undelivered undelivered;
    };

    /// The calls of a connection; they outlive it, as those of a real one do.
    struct FakeChannel final : Channel {
        explicit FakeChannel(std::shared_ptr<Far> far) : far(std::move(far)) {}

        std::shared_ptr<Far> far;
        bool stands = false;
        std::deque<Call> waiting;
        Connection::ErrorHandler failed;

        void call(const std::string& method, Arguments arguments, Reply reply, AnswerLimit) override {
            waiting.push_back({method, std::move(arguments), std::move(reply), nullptr});
            deliver();
        }

        void request(const std::string& method, Arguments arguments, Undelivered undelivered) override {
            waiting.push_back({method, std::move(arguments), [](const Value&) {}, std::move(undelivered)});
            deliver();
        }

        void send(const std::string& method, Arguments arguments) override {
            request(method, std::move(arguments), nullptr);
        }

        void deliver() {
            while (stands && !waiting.empty()) {
                const Call call = std::move(waiting.front());
                waiting.pop_front();
                const auto served = far->interface->methods.find(call.method);
                if (served == far->interface->methods.end())
                    failed("org.freedesktop.DBus.Error.UnknownMethod: no such method");
                else
                    served->second.handler(call.arguments, call.reply);
            }
        }
    };

    class FakeConnection final : public Connection {
      public:
        FakeConnection(FakeLink& link, const std::string& place)
            : link(link), channel(std::make_shared<FakeChannel>(link.farEnd(place))) {
            ++link.openConnections;
        }

        ~FakeConnection() override {
            std::erase(channel->far->connected, this);
            --link.openConnections;
        }

        void setRemoteObjectInterface(RemoteInterface remote) override { interface = std::move(remote); }

        void setInterruptionHandler(Handler handler) override { interruption = std::move(handler); }

        void setInvalidationHandler(Handler handler) override { invalidation = std::move(handler); }

        void resume() override {
            if (channel->far->interface)
                channel->far->connected.push_back(this);
            settle();
        }

        /// Stands once the far end lets it in, and tells when nobody is there any more.
        void settle() const {
            if (channel->far->interface) {
                channel->stands = channel->stands || channel->far->letsIn;
                channel->deliver();
            } else if (const auto& tell =
                           std::exchange(channel->stands, false) ? interruption : invalidation) {
                tell();
            }
        }

        void giveBack() override {
            for (const Call& call : std::exchange(channel->waiting, {})) {
                if (call.undelivered)
                    call.undelivered();
            }
        }

        std::shared_ptr<RemoteObject> remoteObjectProxy() override {
            return remoteObjectProxyWithErrorHandler([](const std::string&) {});
        }

        std::shared_ptr<RemoteObject> remoteObjectProxyWithErrorHandler(ErrorHandler handler) override {
            channel->failed = std::move(handler);
            return link.conforming ? interface.makeProxy(channel) : std::make_shared<RemoteObject>();
        }

        [[nodiscard]] std::string description() const override { return "<Connection>"; }

      private:
        FakeLink& link;
        std::shared_ptr<FakeChannel> channel;
        Handler interruption;
        Handler invalidation;
        RemoteInterface interface;
    };

    class FakeListener final : public Listener {
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

    std::shared_ptr<Far> farEnd(const std::string& place) {
        return places.try_emplace(place, std::make_shared<Far>()).first->second;
    }

    std::map<std::string, std::shared_ptr<Far>> places;
};

} // namespace velloren
