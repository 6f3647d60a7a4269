#include "Platform/Link/DBus/OutgoingBus.h"

#include "Platform/Link/DBus/LocalSocket.h"

#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <malloc.h>
#include <unistd.h>
#include <utility>

namespace velloren {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds firstRetryDelay = 50ms;
constexpr std::chrono::milliseconds longestRetryDelay = 2s;
constexpr std::chrono::milliseconds longestFlush = 1s;

std::uint64_t microseconds(std::chrono::milliseconds duration) {
    return std::uint64_t(std::chrono::microseconds(duration).count());
}

void fail(const OutgoingCall& call, const std::string& error) {
    if (call.failed)
        call.failed(error);
}

void failAll(const std::vector<OutgoingCall>& calls) {
    for (const OutgoingCall& call : calls)
        fail(call, "org.freedesktop.DBus.Error.Disconnected: the connection is not there");
}

/// Whether sd-bus says that there is nobody to send to any more.
bool isDisconnection(int result) {
    return result == -ENOTCONN || result == -ECONNRESET || result == -EPIPE || result == -ESHUTDOWN;
}

/// Waits for the bus daemon to take what was sent, but not for one that stands still.
void flushShortly(sd_bus* bus) {
    const auto limit = std::chrono::steady_clock::now() + longestFlush;
    std::uint64_t queued = 0;
    while (sd_bus_get_n_queued_write(bus, &queued) >= 0 && queued > 0) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(limit - std::chrono::steady_clock::now());
        const int progress = sd_bus_process(bus, nullptr);
        if (progress < 0 || left <= 0ms || (progress == 0 && sd_bus_wait(bus, microseconds(left)) < 0))
            return;
    }
}

/// Once the answer that just arrived has gone: a large one leaves the process with memory that it does not
/// need.
void giveBackMemorySoon(LinkThread& thread, RunLoop& mainLoop) {
    constexpr std::size_t worthwhile = std::size_t(4) << 20U;
    thread.post([&mainLoop] {
        mainLoop.post([] {
            if (mallinfo2().fordblks > worthwhile)
                malloc_trim(0);
        });
    });
}

} // namespace

void ConnectionHandlers::set(Event event, Connection::Handler handler) {
    const std::scoped_lock lock(mutex);
    (event == Event::Interruption ? interruption : invalidation) = std::move(handler);
}

void ConnectionHandlers::forgetAll() {
    const std::scoped_lock lock(mutex);
    ended = true;
    interruption = nullptr;
    invalidation = nullptr;
}

void ConnectionHandlers::happened(Event event) {
    Connection::Handler handler;
    {
        const std::scoped_lock lock(mutex);
        if (std::exchange(ended, true))
            return;
        handler = std::exchange(event == Event::Interruption ? interruption : invalidation, nullptr);
    }
    if (handler)
        handler();
}

void BusConnections::closeAll() {
    for (const auto& bus : std::exchange(open, {}))
        bus->close();
}

/// A call on its way; sd-bus keeps it until the answer came or none will.
struct OutgoingBus::Outstanding {
    std::shared_ptr<OutgoingBus> bus;
    OutgoingCall call;
};

OutgoingBus::OutgoingBus(LinkThread& thread, RunLoop& mainLoop, BusConnections& connections,
                         std::chrono::milliseconds callTimeout)
    : thread(thread), mainLoop(mainLoop), connections(connections), callTimeout(callTimeout),
      retryDelay(firstRetryDelay) {}

OutgoingBus::~OutgoingBus() {
    sd_bus_close_unref(bus);
}

void OutgoingBus::adopt(sd_bus* started) {
    bus = started;
    state = State::Established; // sd-bus keeps what is sent until the bus daemon has let it in
    connections.add(shared_from_this());
    if (!follow())
        end();
}

void OutgoingBus::connect(const Endpoint& newEndpoint) {
    endpoint = newEndpoint;
    connections.add(shared_from_this());
    attempt();
}

void OutgoingBus::attempt() {
    const Reached reached = reach(*endpoint);
    if (reached.who == Reached::Who::Nobody)
        end();
    else if (reached.who == Reached::Who::BusyListener || !open(reached.descriptor) || !follow())
        attemptLater();
}

bool OutgoingBus::open(int descriptor) {
    inlet = Inlet::of(thread.loop(), descriptor);
    if (!inlet || sd_bus_new(&bus) < 0) {
        ::close(descriptor);
        return false;
    }
    const int readingEnd = inlet->takeReadingEnd();
    if (sd_bus_set_fd(bus, readingEnd, descriptor) < 0) {
        ::close(readingEnd);
        ::close(descriptor);
        return false;
    }
    return sd_bus_set_connected_signal(bus, 1) >= 0 && sd_bus_start(bus) >= 0;
}

bool OutgoingBus::follow() {
    return sd_bus_add_filter(bus, nullptr, &OutgoingBus::received, this) >= 0 &&
           sd_bus_attach_event(bus, thread.loop(), SD_EVENT_PRIORITY_NORMAL) >= 0;
}

void OutgoingBus::attemptLater() {
    dropBus();
    const auto due = [](sd_event_source*, std::uint64_t, void* self) {
        static_cast<OutgoingBus*>(self)->attempt();
        return 0;
    };
    sd_event_source* source = nullptr;
    if (sd_event_add_time_relative(thread.loop(), &source, CLOCK_MONOTONIC, microseconds(retryDelay), 0, due,
                                   this) < 0)
        return end();
    retryTimer.reset(source);
    retryDelay = std::min(2 * retryDelay, longestRetryDelay);
}

int OutgoingBus::received(sd_bus_message* message, void* data, sd_bus_error*) {
    auto* self = static_cast<OutgoingBus*>(data);
    if (wire::isLocalSignal(*message, "Connected") && self->state == State::Connecting) {
        self->state = State::Established;
        self->handOverWaiting();
    } else if (wire::isLocalSignal(*message, "Disconnected")) {
        self->disconnected();
    }
    return 0;
}

void OutgoingBus::disconnected() {
    if (state != State::Connecting)
        return end();
    thread.post([self = shared_from_this()] {
        if (self->state == State::Connecting)
            self->attemptLater();
    });
}

void OutgoingBus::end() {
    using Event = ConnectionHandlers::Event;
    const State before = std::exchange(state, State::Ended);
    for (const Outstanding* unanswered : std::exchange(outstanding, {}))
        fail(unanswered->call, "org.freedesktop.DBus.Error.Disconnected: the connection ended");
    handOverWaiting();
    handlers.happened(before == State::Established ? Event::Interruption : Event::Invalidation);
    thread.post([self = shared_from_this()] { self->close(); });
}

void OutgoingBus::call(OutgoingCall call) {
    if (auto tooMany = waiting.add(std::move(call)))
        thread.post([call = std::move(*tooMany)] {
            fail(call, "org.freedesktop.DBus.Error.LimitsExceeded: too many calls wait");
        });
    thread.post([self = shared_from_this()] { self->handOverWaiting(); });
}

std::vector<Connection::Undelivered> OutgoingBus::takeBack() {
    std::vector<Connection::Undelivered> requests;
    for (OutgoingCall& call : waiting.takeRequests())
        requests.push_back({std::move(call.method), std::move(call.arguments)});
    thread.post([others = waiting.takeOthers()] { failAll(others); });
    return requests;
}

void OutgoingBus::handOverWaiting() {
    std::vector<std::function<void()>> failures; // told once the calls are open to others again
    const auto isDone = [&](const OutgoingCall& call) {
        const int result = send(call);
        if (result < 0 && !isDisconnection(result))
            failures.emplace_back(
                [call] { fail(call, "org.freedesktop.DBus.Error.InvalidArgs: the call cannot be sent"); });
        return !isDisconnection(result);
    };
    while (state == State::Established && waiting.handOverFirst(isDone)) {
    }
    for (const auto& tell : failures)
        tell();
    if (state == State::Ended)
        failAll(waiting.takeOthers());
    if (state == State::Ended && isReleased)
        failAll(waiting.takeRequests());
    closeSoonIfDone();
}

wire::Message OutgoingBus::messageFor(const OutgoingCall& call) const {
    sd_bus_message* made = nullptr;
    const char* service = call.service.empty() ? nullptr : call.service.c_str();
    if (sd_bus_message_new_method_call(bus, &made, service, call.objectPath.c_str(), call.interface.c_str(),
                                       call.method.c_str()) < 0)
        return nullptr;
    wire::Message message(made);
    for (const std::string& argument : call.arguments) {
        // The text ends at its first NUL for the wire: better no call than one about something else.
        if (argument.find('\0') != std::string::npos ||
            sd_bus_message_append(message.get(), "s", argument.c_str()) < 0)
            return nullptr;
    }
    return message;
}

int OutgoingBus::send(const OutgoingCall& call) {
    if (sd_bus_is_open(bus) <= 0)
        return -ENOTCONN;
    const wire::Message message = messageFor(call);
    if (!message)
        return -EINVAL;
    if (call.kind != OutgoingCall::Kind::Notice)
        return ask(*message, call);
    const int silent = sd_bus_message_set_expect_reply(message.get(), 0);
    return silent < 0 ? silent : sd_bus_send(bus, message.get(), nullptr);
}

int OutgoingBus::ask(sd_bus_message& message, const OutgoingCall& call) {
    auto asked = std::make_unique<Outstanding>(Outstanding{shared_from_this(), call});
    sd_bus_slot* slot = nullptr;
    const int sent = sd_bus_call_async(bus, &slot, &message, &OutgoingBus::answered, asked.get(),
                                       microseconds(callTimeout));
    if (sent < 0)
        return sent;
    sd_bus_slot_set_destroy_callback(slot, [](void* gone) { delete static_cast<Outstanding*>(gone); });
    sd_bus_slot_set_floating(slot, 1);
    sd_bus_slot_unref(slot);             // the bus holds it from here on
    outstanding.insert(asked.release()); // the slot's now
    return sent;
}

int OutgoingBus::answered(sd_bus_message* message, void* data, sd_bus_error*) {
    auto* const asked = static_cast<Outstanding*>(data);
    const auto bus = asked->bus;
    if (bus->outstanding.erase(asked) == 0)
        return 0; // it counts as failed already
    if (const sd_bus_error* error = sd_bus_message_get_error(message)) {
        fail(asked->call, std::string(error->name) + ": " + (error->message ? error->message : ""));
    } else if (asked->call.reply) {
        const auto value = wire::valueOf(*message);
        if (!value)
            fail(asked->call, "org.freedesktop.DBus.Error.InconsistentMessage: the answer cannot be read");
        asked->call.reply(value.value_or(Value()));
        giveBackMemorySoon(bus->thread, bus->mainLoop);
    }
    bus->closeSoonIfDone();
    return 0;
}

void OutgoingBus::release() {
    isReleased = true;
    handOverWaiting();
}

void OutgoingBus::closeSoonIfDone() {
    if (isReleased && outstanding.empty() && waiting.empty())
        thread.post([self = shared_from_this()] { self->close(); });
}

void OutgoingBus::close() {
    retryTimer.reset();
    if (!endpoint && bus)
        flushShortly(bus);
    state = State::Ended;
    dropBus();
    connections.remove(shared_from_this());
}

void OutgoingBus::dropBus() {
    bus = sd_bus_close_unref(bus);
    inlet.reset();
}

} // namespace velloren
