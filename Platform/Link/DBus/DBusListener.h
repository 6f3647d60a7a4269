#pragma once

#include "Platform/Foundation/Subscription.h"
#include "Platform/Foundation/UniqueDescriptor.h"
#include "Platform/Link/DBus/BusLoop.h"
#include "Platform/Link/Link.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>

namespace velloren {

class DBusPeer;

/// A D-Bus server at a socket of this process's own in the product's runtime folder. It lets in processes of
/// the same user, whom the system vouches for, and serves those that the delegate accepts.
class DBusListener final : public Listener {
  public:
    explicit DBusListener(BusLoop& loop);
    ~DBusListener() override;

    void setDelegate(ListenerDelegate* newDelegate) override { delegate = newDelegate; }

    void resume() override;

    [[nodiscard]] std::optional<Endpoint> endpoint() const override { return ownEndpoint; }

  private:
    void followArrivals();
    void accept();
    void pause();

    BusLoop& loop;
    ListenerDelegate* delegate = nullptr;
    std::optional<Endpoint> ownEndpoint;
    UniqueDescriptor socket;
    Subscription arrivals;
    std::map<std::uint64_t, std::shared_ptr<DBusPeer>> peers;
    std::uint64_t latest = 0;
    std::shared_ptr<bool> alive = std::make_shared<bool>();
};

} // namespace velloren
