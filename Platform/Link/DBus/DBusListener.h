#pragma once

#include "Platform/Link/DBus/LinkThread.h"
#include "Platform/Link/Link.h"

#include <memory>
#include <optional>
#include <string>

namespace velloren {

/// A D-Bus server at a socket of this process's own in the product's runtime folder. It lets in processes of
/// the same user, whom the system vouches for, and serves those that the delegate accepts.
class DBusListener final : public Listener {
  public:
    explicit DBusListener(LinkThread& thread);
    ~DBusListener() override;

    void setDelegate(ListenerDelegate* delegate) override;
    void resume() override;

    [[nodiscard]] std::optional<Endpoint> endpoint() const override { return ownEndpoint; }

  private:
    class Server;
    struct Door;

    LinkThread& thread;
    /// Shared with the tasks that ask the delegate; empty once the listener is gone.
    std::shared_ptr<Door> door;
    std::shared_ptr<Server> server;
    std::optional<Endpoint> ownEndpoint;
    std::string socketPath;
};

} // namespace velloren
