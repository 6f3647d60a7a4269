#pragma once

#include "Platform/Link/Link.h"

#include <memory>
#include <optional>

struct sd_bus;
struct sd_bus_message;
struct sd_event_source;

/// Messages of the link in their wire form, and the owners of sd-bus's objects.
namespace velloren::wire {

struct Release {
    void operator()(sd_bus_message* message) const;
    void operator()(sd_event_source* source) const;
};

using Message = std::unique_ptr<sd_bus_message, Release>;
using EventSource = std::unique_ptr<sd_event_source, Release>;

/// What a reply holds; an empty value for anything that no method of the product answers with. None when the
/// reply does not keep to its signature, goes on behind its end, or holds more than 10,000 meetings.
[[nodiscard]] std::optional<Value> valueOf(sd_bus_message& reply);

/// The arguments of a call, when there are exactly `count` and all of them are texts.
[[nodiscard]] std::optional<Channel::Arguments> textsOf(sd_bus_message& call, std::size_t count);

/// Appends what a method answers with; whether it could be.
bool append(sd_bus_message& reply, ExportedInterface::Result result, const Value& value);

/// Whether the message is the connection's own word for that event ("Connected", "Disconnected").
[[nodiscard]] bool isLocalSignal(sd_bus_message& message, const char* name);

} // namespace velloren::wire
