#pragma once

#include "Platform/Link/DBus/OutgoingBus.h"
#include "Platform/Link/Link.h"

#include <memory>
#include <string>

namespace velloren {

/// An outgoing bus as its owner has it, who may release it while calls are still under way.
class DBusConnection final : public Connection {
  public:
    DBusConnection(std::shared_ptr<OutgoingBus> bus, std::string description);
    ~DBusConnection() override;

    void setRemoteObjectInterface(RemoteInterface interface) override;
    void setInterruptionHandler(Handler handler) override;
    void setInvalidationHandler(Handler handler) override;
    void resume() override;
    void giveBack() override;
    [[nodiscard]] std::shared_ptr<RemoteObject> remoteObjectProxy() override;
    [[nodiscard]] std::shared_ptr<RemoteObject>
    remoteObjectProxyWithErrorHandler(ErrorHandler handler) override;

    [[nodiscard]] std::string description() const override { return printedForm; }

  private:
    std::shared_ptr<OutgoingBus> bus;
    std::string printedForm;
    RemoteInterface interface;
    bool isResumed = false;
};

} // namespace velloren
