#include "Platform/Freedesktop/Bus/OutgoingBus.h"

#include "Platform/Freedesktop/Bus/LocalSocket.h"

#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

#include <ctime>
#include <unistd.h>
#include <utility>

namespace velloren {

namespace {

std::uint64_t microseconds(std::chrono::milliseconds duration) {
    return std::uint64_t(std::chrono::microseconds(duration).count());
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
    Call call;
};

OutgoingBus::OutgoingBus(LinkThread& thread, BusConnections& connections, Timeouts timeouts)
    : thread(thread), connections(connections), timeouts(timeouts) {}

OutgoingBus::~OutgoingBus() {
    sd_bus_close_unref(bus);
}

void OutgoingBus::adopt(sd_bus* started) {
    bus = started;
    isService = true;
    follow();
}

void OutgoingBus::connect(const Endpoint& endpoint) {
    const int descriptor = connectedSocket(endpoint);
    if (descriptor < 0 || !open(descriptor)) {
        handlers.happened(ConnectionHandlers::Event::Invalidation);
        return;
    }
    follow();
    startHandshakeTimer();
}

bool OutgoingBus::open(int descriptor) {
    if (sd_bus_new(&bus) < 0 || sd_bus_set_fd(bus, descriptor, descriptor) < 0) {
        ::close(descriptor);
        return false;
    }
    return sd_bus_set_connected_signal(bus, 1) >= 0 && sd_bus_start(bus) >= 0;
}

void OutgoingBus::follow() {
    connections.add(shared_from_this());
    sd_bus_add_filter(bus, nullptr, &OutgoingBus::received, this);
    if (sd_bus_attach_event(bus, thread.loop(), SD_EVENT_PRIORITY_NORMAL) < 0)
        end();
}

void OutgoingBus::startHandshakeTimer() {
    sd_event_source* source = nullptr;
    const auto ranOut = [](sd_event_source*, std::uint64_t, void* self) {
        static_cast<OutgoingBus*>(self)->end();
        return 0;
    };
    sd_event_add_time_relative(thread.loop(), &source, CLOCK_MONOTONIC, microseconds(timeouts.handshake), 0,
                               ranOut, this);
    handshakeTimer.reset(source);
}

void OutgoingBus::established() {
    isEstablished = true;
    handshakeTimer.reset();
}

void OutgoingBus::end() {
    using Event = ConnectionHandlers::Event;
    for (const Outstanding* unanswered : std::exchange(outstanding, {}))
        fail(unanswered->call, "org.freedesktop.DBus.Error.Disconnected: the connection ended");
    handlers.happened(isEstablished ? Event::Interruption : Event::Invalidation);
    thread.post([self = shared_from_this()] { self->close(); });
}

void OutgoingBus::call(const Destination& destination, Call call) {
    if (!bus || sd_bus_is_open(bus) <= 0) {
        fail(call, "org.freedesktop.DBus.Error.Disconnected: the connection is not there");
        return;
    }
    wire::Message message = messageFor(destination, call);
    if (!message) {
        fail(call, "org.freedesktop.DBus.Error.InvalidArgs: the call cannot be put into a message");
        return;
    }
    send(std::move(message), std::move(call));
}

wire::Message OutgoingBus::messageFor(const Destination& destination, const Call& call) const {
    sd_bus_message* made = nullptr;
    const char* service = destination.service.empty() ? nullptr : destination.service.c_str();
    if (sd_bus_message_new_method_call(bus, &made, service, destination.objectPath.c_str(),
                                       destination.interface.c_str(), call.method.c_str()) < 0)
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

void OutgoingBus::send(wire::Message message, Call call) {
    if (!call.reply) {
        sd_bus_message_set_expect_reply(message.get(), 0);
        sd_bus_send(bus, message.get(), nullptr);
        return;
    }
    auto waiting = std::make_unique<Outstanding>(Outstanding{shared_from_this(), std::move(call)});
    sd_bus_slot* slot = nullptr;
    const int sent = sd_bus_call_async(bus, &slot, message.get(), &OutgoingBus::answered, waiting.get(),
                                       microseconds(timeouts.call));
    if (sent < 0) {
        fail(waiting->call, "org.freedesktop.DBus.Error.Failed: the call cannot be sent");
        return;
    }
    sd_bus_slot_set_destroy_callback(slot, [](void* gone) { delete static_cast<Outstanding*>(gone); });
    sd_bus_slot_set_floating(slot, 1);
    sd_bus_slot_unref(slot);               // the bus holds it from here on
    outstanding.insert(waiting.release()); // the slot's now
}

int OutgoingBus::answered(sd_bus_message* message, void* data, sd_bus_error*) {
    auto* const waiting = static_cast<Outstanding*>(data);
    const auto bus = waiting->bus;
    if (bus->outstanding.erase(waiting) == 0)
        return 0; // it counts as failed already
    if (const sd_bus_error* error = sd_bus_message_get_error(message))
        bus->fail(waiting->call, std::string(error->name) + ": " + (error->message ? error->message : ""));
    else
        waiting->call.reply(wire::valueOf(*message));
    bus->closeSoonIfDone();
    return 0;
}

int OutgoingBus::received(sd_bus_message* message, void* data, sd_bus_error*) {
    auto* self = static_cast<OutgoingBus*>(data);
    if (wire::isLocalSignal(*message, "Connected"))
        self->established();
    else if (wire::isLocalSignal(*message, "Disconnected"))
        self->end();
    return 0;
}

void OutgoingBus::fail(const Call& call, const std::string& error) const {
    if (call.failed)
        call.failed(error);
}

void OutgoingBus::release() {
    isReleased = true;
    closeSoonIfDone();
}

void OutgoingBus::closeSoonIfDone() {
    if (isReleased && outstanding.empty())
        thread.post([self = shared_from_this()] { self->close(); });
}

void OutgoingBus::close() {
    handshakeTimer.reset();
    if (isService)
        sd_bus_flush(bus); // waits for the bus daemon alone
    bus = sd_bus_close_unref(bus);
    connections.remove(shared_from_this());
}

} // namespace velloren
