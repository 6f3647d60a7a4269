#include "Platform/Link/DBus/DBusConnection.h"

#include <utility>

namespace velloren {

namespace {

class DBusChannel final : public Channel {
  public:
    DBusChannel(std::shared_ptr<OutgoingBus> bus, std::string service, const RemoteInterface& interface,
                Connection::ErrorHandler failed)
        : bus(std::move(bus)), service(std::move(service)), objectPath(interface.objectPath),
          interface(interface.name), failed(std::move(failed)) {}

    void call(const std::string& method, Arguments arguments, Reply reply) override {
        bus->call({Kind::Question, service, objectPath, interface, method, std::move(arguments),
                   std::move(reply), failed});
    }

    void request(const std::string& method, Arguments arguments) override {
        bus->call(
            {Kind::Request, service, objectPath, interface, method, std::move(arguments), nullptr, failed});
    }

    void send(const std::string& method, Arguments arguments) override {
        bus->call(
            {Kind::Notice, service, objectPath, interface, method, std::move(arguments), nullptr, nullptr});
    }

  private:
    using Kind = OutgoingCall::Kind;

    std::shared_ptr<OutgoingBus> bus;
    std::string service;
    std::string objectPath;
    std::string interface;
    Connection::ErrorHandler failed;
};

} // namespace

DBusConnection::DBusConnection(LinkThread& thread, std::shared_ptr<OutgoingBus> bus, std::string service,
                               std::string description, Start start)
    : thread(thread), bus(std::move(bus)), service(std::move(service)), printedForm(std::move(description)),
      start(std::move(start)) {}

DBusConnection::~DBusConnection() {
    bus->handlers.forgetAll();
    thread.post([bus = bus] { bus->release(); });
}

void DBusConnection::setRemoteObjectInterface(RemoteInterface newInterface) {
    interface = std::move(newInterface);
}

void DBusConnection::setInterruptionHandler(Handler handler) {
    bus->handlers.set(ConnectionHandlers::Event::Interruption, std::move(handler));
}

void DBusConnection::setInvalidationHandler(Handler handler) {
    bus->handlers.set(ConnectionHandlers::Event::Invalidation, std::move(handler));
}

void DBusConnection::resume() {
    if (const Start first = std::exchange(start, nullptr))
        thread.post([bus = bus, first] { first(*bus); });
}

std::vector<Connection::Undelivered> DBusConnection::takeBack() {
    return bus->takeBack();
}

std::shared_ptr<RemoteObject> DBusConnection::remoteObjectProxy() {
    return remoteObjectProxyWithErrorHandler(nullptr);
}

std::shared_ptr<RemoteObject> DBusConnection::remoteObjectProxyWithErrorHandler(ErrorHandler handler) {
    if (!interface.makeProxy)
        return nullptr;
    return interface.makeProxy(std::make_shared<DBusChannel>(bus, service, interface, std::move(handler)));
}

} // namespace velloren
