#include "Platform/Link/DBus/DBusConnection.h"

#include <utility>

namespace velloren {

namespace {

class DBusChannel final : public Channel {
  public:
    DBusChannel(std::shared_ptr<OutgoingBus> bus, const RemoteInterface& interface,
                Connection::ErrorHandler failed)
        : bus(std::move(bus)), objectPath(interface.objectPath), interface(interface.name),
          failed(std::move(failed)) {}

    void call(const std::string& method, Arguments arguments, Reply reply, AnswerLimit limit) override {
        OutgoingCall call = callOf(Kind::Question, method, std::move(arguments));
        call.reply = std::move(reply);
        call.limit = limit;
        bus->call(std::move(call));
    }

    void request(const std::string& method, Arguments arguments, Undelivered undelivered) override {
        OutgoingCall call = callOf(Kind::Request, method, std::move(arguments));
        call.undelivered = std::move(undelivered);
        bus->call(std::move(call));
    }

    void send(const std::string& method, Arguments arguments) override {
        OutgoingCall call = callOf(Kind::Notice, method, std::move(arguments));
        call.failed = nullptr;
        bus->call(std::move(call));
    }

  private:
    using Kind = OutgoingCall::Kind;

    [[nodiscard]] OutgoingCall callOf(Kind kind, const std::string& method, Arguments arguments) const {
        return {kind, objectPath, interface, method, std::move(arguments), failed};
    }

    std::shared_ptr<OutgoingBus> bus;
    std::string objectPath;
    std::string interface;
    Connection::ErrorHandler failed;
};

} // namespace

DBusConnection::DBusConnection(std::shared_ptr<OutgoingBus> bus, std::string description)
    : bus(std::move(bus)), printedForm(std::move(description)) {}

DBusConnection::~DBusConnection() {
    bus->release();
}

void DBusConnection::setRemoteObjectInterface(RemoteInterface newInterface) {
    interface = std::move(newInterface);
}

void DBusConnection::setInterruptionHandler(Handler handler) {
    bus->interruption = std::move(handler);
}

void DBusConnection::setInvalidationHandler(Handler handler) {
    bus->invalidation = std::move(handler);
}

void DBusConnection::resume() {
    if (!std::exchange(isResumed, true))
        bus->connect();
}

void DBusConnection::giveBack() {
    bus->giveBack();
}

std::shared_ptr<RemoteObject> DBusConnection::remoteObjectProxy() {
    return remoteObjectProxyWithErrorHandler(nullptr);
}

std::shared_ptr<RemoteObject> DBusConnection::remoteObjectProxyWithErrorHandler(ErrorHandler handler) {
    if (!interface.makeProxy)
        return nullptr;
    return interface.makeProxy(std::make_shared<DBusChannel>(bus, interface, std::move(handler)));
}

} // namespace velloren
