#pragma once

#include "Platform/Foundation/RunLoop.h"
#include "Platform/Link/DBus/DBusWire.h"
#include "Platform/Link/DBus/Inlet.h"
#include "Platform/Link/DBus/LinkThread.h"
#include "Platform/Link/DBus/WaitingCalls.h"
#include "Platform/Link/Link.h"

#include <systemd/sd-bus.h>

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
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

/// One sd-bus connection to a service or an endpoint, on the link's thread: every operation runs there, but
/// for those that say otherwise.
class OutgoingBus : public std::enable_shared_from_this<OutgoingBus> {
  public:
    OutgoingBus(LinkThread& thread, RunLoop& mainLoop, BusConnections& connections,
                std::chrono::milliseconds callTimeout);
    OutgoingBus(const OutgoingBus&) = delete;
    OutgoingBus& operator=(const OutgoingBus&) = delete;
    ~OutgoingBus();

    /// Goes on with a bus that was started elsewhere, and takes it over.
    void adopt(sd_bus* started);
    /// Tries until the far end lets this process in, or nobody listens there.
    void connect(const Endpoint& endpoint);
    /// Makes a call, after those made before, as soon as the connection stands. Any thread.
    void call(OutgoingCall call);
    /// The requests that were not handed to the far end; questions that wait fail. Any thread.
    [[nodiscard]] std::vector<Connection::Undelivered> takeBack();
    /// The owner has gone: closes as soon as every call was answered or failed.
    void release();
    /// Sends what a service is still to get, for a second at most, then closes.
    void close();

    ConnectionHandlers handlers;

  private:
    struct Outstanding;
    enum class State { Connecting, Established, Ended };

    void attempt();
    [[nodiscard]] bool open(int descriptor);
    [[nodiscard]] bool follow();
    void attemptLater();
    void disconnected();
    void end();
    void handOverWaiting();
    void closeSoonIfDone();
    void dropBus();
    [[nodiscard]] wire::Message messageFor(const OutgoingCall& call) const;
    [[nodiscard]] int send(const OutgoingCall& call);
    [[nodiscard]] int ask(sd_bus_message& message, const OutgoingCall& call);

    static int received(sd_bus_message* message, void* self, sd_bus_error*);
    static int answered(sd_bus_message* message, void* outstanding, sd_bus_error*);

    LinkThread& thread;
    RunLoop& mainLoop;
    BusConnections& connections;
    std::chrono::milliseconds callTimeout;
    State state = State::Connecting;
    std::optional<Endpoint> endpoint; ///< none for a service
    std::chrono::milliseconds retryDelay;
    wire::EventSource retryTimer;
    std::unique_ptr<Inlet> inlet;
    sd_bus* bus = nullptr;
    bool isReleased = false;
    WaitingCalls waiting;
    std::set<Outstanding*> outstanding;
};

} // namespace velloren
