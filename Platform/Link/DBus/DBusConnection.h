#pragma once

#include "Platform/Link/DBus/OutgoingBus.h"
#include "Platform/Link/Link.h"

#include <functional>
#include <memory>
#include <string>

namespace velloren {

/// The main thread's side of an outgoing bus: it hands everything over to the link's thread.
class DBusConnection final : public Connection {
  public:
    using Start = std::function<void(OutgoingBus&)>;

    /// `service` is empty for an endpoint; `start` runs on the link's thread when the connection is resumed.
    DBusConnection(LinkThread& thread, std::shared_ptr<OutgoingBus> bus, std::string service,
                   std::string description, Start start);
    ~DBusConnection() override;

    void setRemoteObjectInterface(RemoteInterface interface) override;
    void setInterruptionHandler(Handler handler) override;
    void setInvalidationHandler(Handler handler) override;
    void resume() override;
    [[nodiscard]] std::vector<Undelivered> takeBack() override;
    [[nodiscard]] std::shared_ptr<RemoteObject> remoteObjectProxy() override;
    [[nodiscard]] std::shared_ptr<RemoteObject>
    remoteObjectProxyWithErrorHandler(ErrorHandler handler) override;

    [[nodiscard]] std::string description() const override { return printedForm; }

  private:
    LinkThread& thread;
    std::shared_ptr<OutgoingBus> bus;
    std::string service;
    std::string printedForm;
    Start start;
    RemoteInterface interface;
};

} // namespace velloren
