#pragma once

#include "Platform/Freedesktop/Bus/DBusWire.h"
#include "Platform/Freedesktop/Bus/LinkThread.h"
#include "Platform/Link/Link.h"

#include <systemd/sd-bus.h>

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace velloren {

/// The handlers of a connection, which one thread sets and another runs.
class ConnectionHandlers {
  public:
    enum class Event { Interruption, Invalidation };

    void set(Event event, Connection::Handler handler);
    /// From now on no handler starts to run.
    void forgetAll();
    /// Runs the handler for `event`; the first event of a connection is its last.
    void happened(Event event);

  private:
    std::mutex mutex;
    Connection::Handler interruption;
    Connection::Handler invalidation;
    bool ended = false;
};

class OutgoingBus;

/// The outgoing buses that are open. It keeps each until it is closed, also when nobody else does.
class BusConnections {
  public:
    void add(const std::shared_ptr<OutgoingBus>& bus) { open.insert(bus); }

    void remove(const std::shared_ptr<OutgoingBus>& bus) { open.erase(bus); }

    /// Sends what is still to go to services, and closes all.
    void closeAll();

  private:
    std::set<std::shared_ptr<OutgoingBus>> open;
};

/// One sd-bus connection to a service or an endpoint, on the link's thread: every operation runs there.
class OutgoingBus : public std::enable_shared_from_this<OutgoingBus> {
  public:
    struct Call {
        std::string method;
        Channel::Arguments arguments;
        Channel::Reply reply; ///< none awaits no answer
        Connection::ErrorHandler failed;
    };

    struct Destination {
        std::string service; ///< empty for an endpoint
        std::string objectPath;
        std::string interface;
    };

    struct Timeouts {
        std::chrono::milliseconds handshake;
        std::chrono::milliseconds call;
    };

    OutgoingBus(LinkThread& thread, BusConnections& connections, Timeouts timeouts);
    OutgoingBus(const OutgoingBus&) = delete;
    OutgoingBus& operator=(const OutgoingBus&) = delete;
    ~OutgoingBus();

    /// Goes on with a bus that was started elsewhere, and takes it over.
    void adopt(sd_bus* started);
    void connect(const Endpoint& endpoint);
    void call(const Destination& destination, Call call);
    /// The owner has gone: closes as soon as every call was answered or failed.
    void release();
    /// Sends what a service is still to get, then closes.
    void close();

    ConnectionHandlers handlers;

  private:
    struct Outstanding;

    bool open(int descriptor);
    void follow();
    void startHandshakeTimer();
    void established();
    void end();
    void closeSoonIfDone();
    void fail(const Call& call, const std::string& error) const;
    [[nodiscard]] wire::Message messageFor(const Destination& destination, const Call& call) const;
    void send(wire::Message message, Call call);

    static int received(sd_bus_message* message, void* self, sd_bus_error*);
    static int answered(sd_bus_message* message, void* outstanding, sd_bus_error*);

    LinkThread& thread;
    BusConnections& connections;
    Timeouts timeouts;
    sd_bus* bus = nullptr;
    wire::EventSource handshakeTimer;
    bool isEstablished = false;
    bool isService = false;
    bool isReleased = false;
    std::set<Outstanding*> outstanding;
};

} // namespace velloren
