#pragma once

#include "Platform/Foundation/UniqueDescriptor.h"
#include "Platform/Link/DBus/BusLoop.h"
#include "Platform/Link/DBus/DBusExport.h"

#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace velloren {

/// A process that connected to a listener of this one, and what it is served. Main thread only.
class DBusPeer : public std::enable_shared_from_this<DBusPeer> {
  public:
    /// Takes over the connected socket. None when that cannot be served. `gone` runs once, later, when the
    /// far end went away; not any more once the result has.
    [[nodiscard]] static std::shared_ptr<DBusPeer> serve(BusLoop& loop, UniqueDescriptor connected,
                                                         std::optional<ExportedInterface> exported,
                                                         std::function<void()> gone);

    DBusPeer(const DBusPeer&) = delete;
    DBusPeer& operator=(const DBusPeer&) = delete;
    ~DBusPeer();

  private:
    DBusPeer(BusLoop& loop, std::function<void()> gone) : loop(loop), gone(std::move(gone)) {}

    [[nodiscard]] bool start(UniqueDescriptor connected);
    void readOn();
    static int received(sd_bus_message* message, void* self, sd_bus_error*);

    BusLoop& loop;
    std::function<void()> gone;
    sd_bus* bus = nullptr;
    std::unique_ptr<DBusExport> served;
};

} // namespace velloren
