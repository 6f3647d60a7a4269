#pragma once

#include "Platform/Link/Link.h"

#include <memory>
#include <optional>

struct sd_bus;
struct sd_bus_message;

/// Messages of the link in their wire form, and the owners of sd-bus's objects.
namespace velloren::wire {

struct Release {
    void operator()(sd_bus_message* message) const;
};

using Message = std::unique_ptr<sd_bus_message, Release>;

/// What a reply holds; an empty value for anything that no method of the product answers with. None when the
/// reply does not keep to its signature, goes on behind its end, or holds more than `limit` allows.
[[nodiscard]] std::optional<Value> valueOf(sd_bus_message& reply, AnswerLimit limit);

/// The arguments of a call, when there are exactly `count` and all of them are texts.
[[nodiscard]] std::optional<Channel::Arguments> textsOf(sd_bus_message& call, std::size_t count);

/// Appends `text`, with what D-Bus or sd-bus refuses in it replaced; whether it could be.
[[nodiscard]] bool appendText(sd_bus_message& message, const std::string& text);

/// Appends what a method answers with, its texts like that; whether it could be.
[[nodiscard]] bool append(sd_bus_message& reply, ExportedInterface::Result result, const Value& value);

/// Whether the message is the connection's own word for that event ("Connected", "Disconnected").
[[nodiscard]] bool isLocalSignal(sd_bus_message& message, const char* name);

} // namespace velloren::wire
