#include "Platform/Link/DBus/DBusConnection.h"

#include "Platform/Foundation/Memory.h"
#include "Platform/Foundation/RunLoop.h"
#include "Platform/Link/DBus/LocalSocket.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace velloren {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds firstRetryDelay = 50ms;
constexpr std::chrono::milliseconds longestRetryDelay = 2s;
constexpr std::chrono::milliseconds longestFlush = 1s;

constexpr std::size_t manyDictionaries = 1000;

constexpr auto notConnected = "org.freedesktop.DBus.Error.Disconnected: the connection is not there";
constexpr auto cannotBeSent = "org.freedesktop.DBus.Error.InvalidArgs: the call cannot be sent";
constexpr auto cannotBeRead = "org.freedesktop.DBus.Error.InconsistentMessage: the answer cannot be read";

std::uint64_t microseconds(std::chrono::milliseconds duration) {
    return std::uint64_t(std::chrono::microseconds(duration).count());
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

void fail(const DBusConnection::Call& call, const std::string& error) {
    if (call.failed)
        call.failed(error);
}

/// Whoever made the call may still be at it.
void failLater(const DBusConnection::Call& call, const char* error) {
    RunLoop::main().post([call, error] { fail(call, error); });
}

/// Calls to one object, with the error handler of one proxy.
class DBusChannel final : public Channel {
  public:
    DBusChannel(std::shared_ptr<DBusConnection> connection, const RemoteInterface& interface,
                Connection::ErrorHandler failed)
        : connection(std::move(connection)), objectPath(interface.objectPath), interface(interface.name),
          failed(std::move(failed)) {}

    void call(const std::string& method, Arguments arguments, Reply reply, AnswerLimit limit) override {
        connection->call({Kind::Question, objectPath, interface, method, std::move(arguments), failed,
                          std::move(reply), limit});
    }

    void request(const std::string& method, Arguments arguments, Undelivered undelivered) override {
        connection->call({Kind::Request,
                          objectPath,
                          interface,
                          method,
                          std::move(arguments),
                          failed,
                          nullptr,
                          {},
                          std::move(undelivered)});
    }

    void send(const std::string& method, Arguments arguments) override {
        connection->call({Kind::Notice, objectPath, interface, method, std::move(arguments), nullptr});
    }

  private:
    using Kind = DBusConnection::Call::Kind;

    std::shared_ptr<DBusConnection> connection;
    std::string objectPath;
    std::string interface;
    Connection::ErrorHandler failed;
};

} // namespace

/// A call on its way; sd-bus keeps it until the answer came or none will, and answers those that the end of
/// the connection leaves by an error.
struct DBusConnection::Outstanding {
    std::shared_ptr<DBusConnection> connection;
    Call call;
};

DBusConnection::DBusConnection(BusLoop& loop, Keeper& keeper, FarEnd farEnd,
                               std::chrono::milliseconds callTimeout)
    : loop(loop), keeper(keeper), farEnd(std::move(farEnd)), callTimeout(callTimeout),
      retryDelay(firstRetryDelay) {}

DBusConnection::~DBusConnection() {
    sd_bus_close_unref(bus);
}

void DBusConnection::setRemoteObjectInterface(RemoteInterface newInterface) {
    interface = std::move(newInterface);
}

void DBusConnection::setInterruptionHandler(Handler handler) {
    interruption = std::move(handler);
}

void DBusConnection::setInvalidationHandler(Handler handler) {
    invalidation = std::move(handler);
}

std::shared_ptr<RemoteObject> DBusConnection::remoteObjectProxy() {
    return remoteObjectProxyWithErrorHandler(nullptr);
}

std::shared_ptr<RemoteObject> DBusConnection::remoteObjectProxyWithErrorHandler(ErrorHandler handler) {
    if (!interface.makeProxy)
        return nullptr;
    return interface.makeProxy(
        std::make_shared<DBusChannel>(shared_from_this(), interface, std::move(handler)));
}

std::string DBusConnection::description() const {
    const auto* endpoint = std::get_if<Endpoint>(&farEnd);
    return endpoint ? "<Connection: endpoint " + endpoint->address() + ">"
                    : "<Connection: service " + std::get<std::string>(farEnd) + ">";
}

void DBusConnection::resume() {
    if (state != State::New)
        return;
    keeper.insert(shared_from_this());
    state = State::Connecting;
    if (std::holds_alternative<std::string>(farEnd))
        openService();
    else
        RunLoop::main().post([self = shared_from_this()] { self->attempt(); });
}

void DBusConnection::openService() {
    state = State::Established; // sd-bus keeps what is sent until the bus daemon has let it in
    if (sd_bus_open_user_with_description(&bus, "velloren-link") < 0 || !follow())
        RunLoop::main().post([self = shared_from_this()] { self->end(); });
}

void DBusConnection::attempt() {
    if (state != State::Connecting)
        return;
    Reached reached = reach(std::get<Endpoint>(farEnd));
    if (reached.who == Reached::Who::Nobody)
        end();
    else if (!open(std::move(reached.descriptor)) || !follow())
        attemptLater();
}

bool DBusConnection::open(UniqueDescriptor connected) {
    if (!connected || sd_bus_new(&bus) < 0 || sd_bus_set_fd(bus, connected.get(), connected.get()) < 0)
        return false;
    (void)connected.release(); // the bus's now
    return sd_bus_set_connected_signal(bus, 1) >= 0 && sd_bus_start(bus) >= 0;
}

bool DBusConnection::follow() {
    loop.wakeUp();
    return sd_bus_add_filter(bus, nullptr, &DBusConnection::received, this) >= 0 &&
           sd_bus_attach_event(bus, loop.events(), SD_EVENT_PRIORITY_NORMAL) >= 0;
}

void DBusConnection::attemptLater() {
    bus = sd_bus_close_unref(bus);
    RunLoop::main().postAfter(retryDelay, [self = shared_from_this()] { self->attempt(); });
    retryDelay = std::min(2 * retryDelay, longestRetryDelay);
}

int DBusConnection::received(sd_bus_message* message, void* data, sd_bus_error*) {
    auto* self = static_cast<DBusConnection*>(data);
    if (wire::isLocalSignal(*message, "Connected") && self->state == State::Connecting) {
        self->state = State::Established;
        self->handOverWaiting();
    } else if (wire::isLocalSignal(*message, "Disconnected")) {
        // Later: the bus that tells of it is still at work.
        RunLoop::main().post([self = self->shared_from_this()] { self->disconnected(); });
    }
    return 0;
}

void DBusConnection::disconnected() {
    if (state == State::Connecting)
        attemptLater();
    else
        end();
}

void DBusConnection::end() {
    if (state == State::Ended)
        return;
    const auto handler =
        state == State::Established ? &DBusConnection::interruption : &DBusConnection::invalidation;
    close();
    handOverWaiting();
    RunLoop::main().post([self = shared_from_this(), handler] {
        if (const auto last = std::exchange((*self).*handler, nullptr))
            last();
    });
}

void DBusConnection::call(Call call) {
    waiting.push_back(std::move(call));
    handOverWaiting();
}

void DBusConnection::giveBack() {
    for (const Call& call : std::exchange(waiting, {})) {
        if (call.kind != Call::Kind::Request)
            failLater(call, notConnected);
        else if (call.undelivered)
            call.undelivered();
    }
}

void DBusConnection::handOverWaiting() {
    while (state == State::Established && !waiting.empty()) {
        const int result = send(waiting.front());
        if (isDisconnection(result))
            break; // the bus tells of its end in a moment
        if (result < 0)
            failLater(waiting.front(), cannotBeSent);
        waiting.pop_front();
    }
    if (state == State::Ended) {
        std::erase_if(waiting, [this](const Call& call) {
            const bool isLost = isReleased || call.kind != Call::Kind::Request;
            if (isLost)
                failLater(call, notConnected);
            return isLost;
        });
    }
    closeSoonIfDone();
}

wire::Message DBusConnection::messageFor(const Call& call) const {
    sd_bus_message* made = nullptr;
    const auto* service = std::get_if<std::string>(&farEnd);
    if (sd_bus_message_new_method_call(bus, &made, service ? service->c_str() : nullptr,
                                       call.objectPath.c_str(), call.interface.c_str(),
                                       call.method.c_str()) < 0)
        return nullptr;
    wire::Message message(made);
    for (const std::string& argument : call.arguments) {
        if (!wire::appendText(*message, argument))
            return nullptr;
    }
    return message;
}

int DBusConnection::send(const Call& call) {
    if (sd_bus_is_open(bus) <= 0)
        return -ENOTCONN;
    const wire::Message message = messageFor(call);
    if (!message)
        return -EINVAL;
    loop.wakeUp();
    if (call.kind != Call::Kind::Notice)
        return ask(*message, call);
    const int silent = sd_bus_message_set_expect_reply(message.get(), 0);
    return silent < 0 ? silent : sd_bus_send(bus, message.get(), nullptr);
}

int DBusConnection::ask(sd_bus_message& message, const Call& call) {
    auto asked = std::make_unique<Outstanding>(Outstanding{shared_from_this(), call});
    sd_bus_slot* slot = nullptr;
    const int sent = sd_bus_call_async(bus, &slot, &message, &DBusConnection::answered, asked.get(),
                                       microseconds(callTimeout));
    if (sent < 0)
        return sent;
    sd_bus_slot_set_destroy_callback(slot, [](void* gone) { delete static_cast<Outstanding*>(gone); });
    sd_bus_slot_set_floating(slot, 1);
    sd_bus_slot_unref(slot); // the bus holds it from here on
    (void)asked.release();   // the slot's now
    ++unanswered;
    return sent;
}

int DBusConnection::answered(sd_bus_message* message, void* data, sd_bus_error*) {
    auto* const asked = static_cast<Outstanding*>(data);
    const auto connection = asked->connection;
    --connection->unanswered;
    if (const sd_bus_error* error = sd_bus_message_get_error(message)) {
        fail(asked->call, std::string(error->name) + ": " + (error->message ? error->message : ""));
    } else if (asked->call.reply) {
        auto value = wire::valueOf(*message, asked->call.limit);
        if (!value)
            fail(asked->call, cannotBeRead);
        const auto* list = value ? std::get_if<std::vector<Dictionary>>(&*value) : nullptr;
        const bool isLarge = list && list->size() > manyDictionaries;
        asked->call.reply(std::move(value).value_or(Value()));
        if (isLarge)
            RunLoop::main().post(giveBackUnusedMemory);
    }
    connection->closeSoonIfDone();
    return 0;
}

void DBusConnection::release() {
    interruption = invalidation = nullptr;
    isReleased = true;
    handOverWaiting();
}

void DBusConnection::closeSoonIfDone() {
    if (isReleased && unanswered == 0 && waiting.empty())
        RunLoop::main().post([self = shared_from_this()] { self->close(); });
}

void DBusConnection::close() {
    const State before = std::exchange(state, State::Ended);
    if (before == State::New || before == State::Ended)
        return;
    if (bus && std::holds_alternative<std::string>(farEnd))
        flushShortly(bus);
    bus = sd_bus_close_unref(bus);
    keeper.erase(shared_from_this());
}

} // namespace velloren
