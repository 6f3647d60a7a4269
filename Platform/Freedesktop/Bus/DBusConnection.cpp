#include "Platform/Freedesktop/Bus/DBusConnection.h"

#include <utility>

namespace velloren {

namespace {

class DBusChannel final : public Channel {
  public:
    DBusChannel(LinkThread& thread, std::shared_ptr<OutgoingBus> bus, OutgoingBus::Destination destination,
                Connection::ErrorHandler failed)
        : thread(thread), bus(std::move(bus)), destination(std::move(destination)),
          failed(std::move(failed)) {}

    void call(const std::string& method, Arguments arguments, Reply reply) override {
        post({method, std::move(arguments), std::move(reply), failed});
    }

    void send(const std::string& method, Arguments arguments) override {
        post({method, std::move(arguments), nullptr, nullptr});
    }

  private:
    void post(OutgoingBus::Call call) {
        thread.post(
            [bus = bus, destination = destination, call = std::move(call)] { bus->call(destination, call); });
    }

    LinkThread& thread;
    std::shared_ptr<OutgoingBus> bus;
    OutgoingBus::Destination destination;
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

std::shared_ptr<RemoteObject> DBusConnection::remoteObjectProxy() {
    return remoteObjectProxyWithErrorHandler(nullptr);
}

std::shared_ptr<RemoteObject> DBusConnection::remoteObjectProxyWithErrorHandler(ErrorHandler handler) {
    if (!interface.makeProxy)
        return nullptr;
    return interface.makeProxy(std::make_shared<DBusChannel>(
        thread, bus, OutgoingBus::Destination{service, interface.objectPath, interface.name},
        std::move(handler)));
}

} // namespace velloren
