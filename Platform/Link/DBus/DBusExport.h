#pragma once

#include "Platform/Link/Link.h"

#include <systemd/sd-bus.h>

#include <functional>
#include <memory>

namespace velloren {

/// Serves an interface on an sd-bus connection. Released before the connection is; answers may come later
/// than that.
class DBusExport {
  public:
    using AfterAnswer = std::function<void()>;

    /// None when the bus refuses. `afterAnswer`, which may be none, runs each time something was sent.
    [[nodiscard]] static std::unique_ptr<DBusExport> serve(sd_bus* bus, ExportedInterface interface,
                                                           AfterAnswer afterAnswer = nullptr);

    DBusExport(const DBusExport&) = delete;
    DBusExport& operator=(const DBusExport&) = delete;
    ~DBusExport();

  private:
    DBusExport(ExportedInterface interface, AfterAnswer afterAnswer);

    static int received(sd_bus_message* call, void* self, sd_bus_error* error);
    int receive(sd_bus_message& call, sd_bus_error& error);
    int introspect(sd_bus_message& call) const;

    ExportedInterface interface;
    AfterAnswer afterAnswer;
    sd_bus_slot* slot = nullptr;
};

} // namespace velloren
