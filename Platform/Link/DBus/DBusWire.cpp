#include "Platform/Link/DBus/DBusWire.h"

#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

#include <string_view>
#include <utility>

namespace velloren::wire {

namespace {

constexpr auto meetingList = "aa{sv}";
constexpr std::size_t mostMeetings = 10000;
constexpr std::size_t mostFields = 10 * mostMeetings; // of all meetings together
constexpr std::size_t longestText = 65536;            // bytes, of an answer that is one text

/// None when it cannot be read.
std::optional<Scalar> scalarIn(sd_bus_message& message, std::string_view type) {
    if (type == "s") {
        const char* text = nullptr;
        if (sd_bus_message_read(&message, "v", "s", &text) <= 0)
            return std::nullopt;
        return std::string(text);
    }
    if (type == "b") {
        int flag = 0;
        if (sd_bus_message_read(&message, "v", "b", &flag) <= 0)
            return std::nullopt;
        return flag != 0;
    }
    if (sd_bus_message_skip(&message, "v") < 0)
        return std::nullopt;
    return Scalar();
}

/// None when it cannot be read, or has more entries than there is `room` for, which it takes up.
std::optional<Dictionary> dictionaryIn(sd_bus_message& message, std::size_t& room) {
    Dictionary dictionary;
    int entered = 0;
    while ((entered = sd_bus_message_enter_container(&message, 'e', "sv")) > 0) {
        const char* key = nullptr;
        const char* type = nullptr;
        if (room == 0 || sd_bus_message_read(&message, "s", &key) <= 0 ||
            sd_bus_message_peek_type(&message, nullptr, &type) <= 0)
            return std::nullopt;
        auto scalar = scalarIn(message, type);
        if (!scalar || sd_bus_message_exit_container(&message) <= 0)
            return std::nullopt;
        dictionary.insert_or_assign(key, std::move(*scalar));
        --room;
    }
    return entered == 0 ? std::optional(std::move(dictionary)) : std::nullopt;
}

/// None when it cannot be read to its end, or holds too much.
std::optional<std::vector<Dictionary>> listIn(sd_bus_message& message) {
    if (sd_bus_message_enter_container(&message, 'v', meetingList) <= 0 ||
        sd_bus_message_enter_container(&message, 'a', "a{sv}") <= 0)
        return std::nullopt;
    std::vector<Dictionary> list;
    std::size_t room = mostFields;
    int entered = 0;
    while ((entered = sd_bus_message_enter_container(&message, 'a', "{sv}")) > 0) {
        auto dictionary = list.size() < mostMeetings ? dictionaryIn(message, room) : std::nullopt;
        if (!dictionary || sd_bus_message_exit_container(&message) <= 0)
            return std::nullopt;
        list.push_back(std::move(*dictionary));
    }
    const bool whole = entered == 0 && sd_bus_message_exit_container(&message) > 0 &&
                       sd_bus_message_exit_container(&message) > 0;
    return whole ? std::optional(std::move(list)) : std::nullopt;
}

/// The next thing in the message, when its signature is one that a method of the product answers with.
std::optional<Value> valueIn(sd_bus_message& reply, std::string_view signature) {
    if (signature == "s") {
        const char* text = nullptr;
        if (sd_bus_message_read(&reply, "s", &text) <= 0 || std::string_view(text).size() > longestText)
            return std::nullopt;
        return std::string(text);
    }
    if (signature == "b") {
        int flag = 0;
        if (sd_bus_message_read(&reply, "b", &flag) <= 0)
            return std::nullopt;
        return flag != 0;
    }
    const char* held = nullptr;
    if (sd_bus_message_peek_type(&reply, nullptr, &held) <= 0)
        return std::nullopt;
    if (std::string_view(held) != meetingList)
        return sd_bus_message_skip(&reply, "v") < 0 ? std::nullopt : std::optional(Value());
    auto list = listIn(reply);
    return list ? std::optional<Value>(std::move(*list)) : std::nullopt;
}

bool appendScalar(sd_bus_message& message, const Scalar& scalar) {
    if (const auto* text = std::get_if<std::string>(&scalar))
        return sd_bus_message_append(&message, "v", "s", text->c_str()) >= 0;
    const bool* flag = std::get_if<bool>(&scalar);
    return sd_bus_message_append(&message, "v", "b", int(flag && *flag)) >= 0;
}

bool appendDictionary(sd_bus_message& message, const Dictionary& dictionary) {
    bool good = sd_bus_message_open_container(&message, 'a', "{sv}") >= 0;
    for (const auto& [key, value] : dictionary) {
        good = good && sd_bus_message_open_container(&message, 'e', "sv") >= 0 &&
               sd_bus_message_append(&message, "s", key.c_str()) >= 0 && appendScalar(message, value) &&
               sd_bus_message_close_container(&message) >= 0;
    }
    return good && sd_bus_message_close_container(&message) >= 0;
}

bool appendMeetingList(sd_bus_message& message, const Value& value) {
    const auto* list = std::get_if<std::vector<Dictionary>>(&value);
    if (!list)
        return sd_bus_message_append(&message, "v", "s", "") >= 0; // anything but a list says: none
    bool good = sd_bus_message_open_container(&message, 'v', meetingList) >= 0 &&
                sd_bus_message_open_container(&message, 'a', "a{sv}") >= 0;
    for (const Dictionary& dictionary : *list)
        good = good && appendDictionary(message, dictionary);
    return good && sd_bus_message_close_container(&message) >= 0 &&
           sd_bus_message_close_container(&message) >= 0;
}

} // namespace

void Release::operator()(sd_bus_message* message) const {
    sd_bus_message_unref(message);
}

void Release::operator()(sd_event_source* source) const {
    sd_event_source_disable_unref(source);
}

std::optional<Value> valueOf(sd_bus_message& reply) {
    const std::string_view signature = sd_bus_message_get_signature(&reply, 1);
    if (signature != "s" && signature != "b" && signature != "v")
        return Value();
    auto value = valueIn(reply, signature);
    return value && sd_bus_message_at_end(&reply, 1) > 0 ? std::move(value) : std::nullopt;
}

std::optional<Channel::Arguments> textsOf(sd_bus_message& call, std::size_t count) {
    if (std::string_view(sd_bus_message_get_signature(&call, 1)) != std::string(count, 's'))
        return std::nullopt;
    Channel::Arguments arguments;
    for (std::size_t index = 0; index < count; ++index) {
        const char* text = nullptr;
        if (sd_bus_message_read(&call, "s", &text) <= 0)
            return std::nullopt;
        arguments.emplace_back(text);
    }
    return arguments;
}

bool append(sd_bus_message& reply, ExportedInterface::Result result, const Value& value) {
    using Result = ExportedInterface::Result;
    switch (result) {
    case Result::Nothing:
        return true;
    case Result::Boolean: {
        const bool* flag = std::get_if<bool>(&value);
        return sd_bus_message_append(&reply, "b", int(flag && *flag)) >= 0;
    }
    case Result::Text: {
        const auto* text = std::get_if<std::string>(&value);
        return sd_bus_message_append(&reply, "s", text ? text->c_str() : "") >= 0;
    }
    case Result::MeetingList:
        return appendMeetingList(reply, value);
    }
    return false;
}

bool isLocalSignal(sd_bus_message& message, const char* name) {
    return sd_bus_message_is_signal(&message, "org.freedesktop.DBus.Local", name) > 0;
}

} // namespace velloren::wire
