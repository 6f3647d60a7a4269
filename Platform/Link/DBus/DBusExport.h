#pragma once

#include "Platform/Link/DBus/DBusWire.h"
#include "Platform/Link/Link.h"

#include <systemd/sd-bus.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>

namespace velloren {

/// Serves an interface on an sd-bus connection, on that connection's thread.
class DBusExport : public std::enable_shared_from_this<DBusExport> {
  public:
    /// Runs a task on some thread, now or later, in order.
    using Queue = std::function<void(std::function<void()>)>;

    /// Handlers run on `handlers`; what they answer is sent from `answers`, which leads to the connection's
    /// thread. The result serves until it is released, which must be before the connection is.
    [[nodiscard]] static std::shared_ptr<DBusExport> serve(sd_bus* bus, ExportedInterface interface,
                                                           Queue handlers, Queue answers);

    DBusExport(const DBusExport&) = delete;
    DBusExport& operator=(const DBusExport&) = delete;
    ~DBusExport();

  private:
    DBusExport(ExportedInterface interface, Queue handlers, Queue answers);

    static int received(sd_bus_message* call, void* self, sd_bus_error* error);
    int receive(sd_bus_message& call, sd_bus_error& error);
    int introspect(sd_bus_message& call) const;
    void answer(std::uint64_t number, ExportedInterface::Result result, const Value& value);

    ExportedInterface interface;
    Queue handlers;
    Queue answers;
    sd_bus_slot* slot = nullptr;
    std::map<std::uint64_t, wire::Message> unanswered;
    std::uint64_t latest = 0;
};

} // namespace velloren
