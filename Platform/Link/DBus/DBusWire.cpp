#include "Platform/Link/DBus/DBusWire.h"

#include "Platform/Foundation/Utf8.h"

#include <systemd/sd-bus.h>

#include <string_view>
#include <utility>

namespace velloren::wire {

namespace {

constexpr auto dictionaries = "aa{sv}";
constexpr std::size_t mostFields = 10; // of a dictionary, in the mean

/// Reads an answer from its beginning to its end, within a limit. What is read is none when it breaks the
/// rules, or the limit.
class Reader {
  public:
    Reader(sd_bus_message& message, AnswerLimit limit)
        : message(message), dictionariesLeft(limit.dictionaries), fieldsLeft(limit.dictionaries * mostFields),
          bytesLeft(limit.bytes) {}

    std::optional<std::string> text() {
        const char* text = nullptr;
        if (sd_bus_message_read(&message, "s", &text) <= 0)
            return std::nullopt;
        const std::string_view read = text;
        if (read.size() > bytesLeft)
            return std::nullopt;
        bytesLeft -= read.size();
        return std::string(read);
    }

    std::optional<bool> flag() {
        int flag = 0;
        return sd_bus_message_read(&message, "b", &flag) > 0 ? std::optional(flag != 0) : std::nullopt;
    }

    /// The list that a variant holds; an empty value when it holds something else.
    std::optional<Value> list() {
        const std::string type = heldType();
        Value value;
        const bool whole = eachIn('v', type.c_str(), [&] {
            return type == dictionaries ? dictionariesInto(value.emplace<std::vector<Dictionary>>()) : skip();
        });
        return whole ? std::optional(std::move(value)) : std::nullopt;
    }

  private:
    /// The type of what the next thing, a container, holds; empty when that cannot be read.
    std::string heldType() {
        const char* held = nullptr;
        return sd_bus_message_peek_type(&message, nullptr, &held) > 0 && held ? held : "";
    }

    bool dictionariesInto(std::vector<Dictionary>& list) {
        return eachIn('a', "a{sv}",
                      [&] { return dictionariesLeft-- > 0 && dictionaryInto(list.emplace_back()); });
    }

    /// Enters a container and calls `read` until it is at its end; whether all went well.
    template <class Read>
    bool eachIn(char type, const char* contents, Read read) {
        if (sd_bus_message_enter_container(&message, type, contents) <= 0)
            return false;
        int atEnd = 0;
        while ((atEnd = sd_bus_message_at_end(&message, 0)) == 0) {
            if (!read())
                return false;
        }
        return atEnd > 0 && sd_bus_message_exit_container(&message) > 0;
    }

    bool dictionaryInto(Dictionary& dictionary) {
        return eachIn('a', "{sv}", [&] {
            return fieldsLeft-- > 0 && eachIn('e', "sv", [&] { return fieldInto(dictionary); });
        });
    }

    bool fieldInto(Dictionary& dictionary) {
        const auto key = text();
        auto value = key ? scalar() : std::nullopt;
        if (value)
            dictionary.insert_or_assign(*key, std::move(*value));
        return value.has_value();
    }

    /// What a variant holds.
    std::optional<Scalar> scalar() {
        const std::string type = heldType();
        std::optional<Scalar> scalar;
        const bool whole = eachIn('v', type.c_str(), [&] {
            if (type == "s")
                scalar = text();
            else if (type == "b")
                scalar = flag();
            else if (skip())
                scalar.emplace();
            return scalar.has_value();
        });
        return whole ? std::move(scalar) : std::nullopt;
    }

    /// Counts what it skips as fields: sd-bus' own way would take its time over a large array.
    bool skip() {
        char type = 0;
        const char* contents = nullptr;
        if (fieldsLeft-- == 0 || sd_bus_message_peek_type(&message, &type, &contents) <= 0)
            return false;
        if (!contents)
            return sd_bus_message_skip(&message, nullptr) > 0;
        return eachIn(type, std::string(contents).c_str(), [this] { return skip(); });
    }

    sd_bus_message& message;
    std::size_t dictionariesLeft;
    std::size_t fieldsLeft;
    std::size_t bytesLeft;
};

bool appendScalar(sd_bus_message& message, const Scalar& scalar) {
    if (const auto* text = std::get_if<std::string>(&scalar))
        return sd_bus_message_open_container(&message, 'v', "s") >= 0 && wire::appendText(message, *text) &&
               sd_bus_message_close_container(&message) >= 0;
    const bool* flag = std::get_if<bool>(&scalar);
    return sd_bus_message_append(&message, "v", "b", int(flag && *flag)) >= 0;
}

bool appendDictionary(sd_bus_message& message, const Dictionary& dictionary) {
    bool good = sd_bus_message_open_container(&message, 'a', "{sv}") >= 0;
    for (const auto& [key, value] : dictionary) {
        good = good && sd_bus_message_open_container(&message, 'e', "sv") >= 0 &&
               wire::appendText(message, key) && appendScalar(message, value) &&
               sd_bus_message_close_container(&message) >= 0;
    }
    return good && sd_bus_message_close_container(&message) >= 0;
}

bool appendDictionaries(sd_bus_message& message, const Value& value) {
    const auto* list = std::get_if<std::vector<Dictionary>>(&value);
    if (!list)
        return sd_bus_message_append(&message, "v", "s", "") >= 0; // anything but a list says: none
    bool good = sd_bus_message_open_container(&message, 'v', dictionaries) >= 0 &&
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

std::optional<Value> valueOf(sd_bus_message& reply, AnswerLimit limit) {
    Reader reader(reply, limit);
    const std::string_view signature = sd_bus_message_get_signature(&reply, 1);
    std::optional<Value> value;
    if (signature == "s")
        value = reader.text();
    else if (signature == "b")
        value = reader.flag();
    else if (signature == "v")
        value = reader.list();
    else
        return Value();
    return value && sd_bus_message_at_end(&reply, 1) > 0 ? std::move(value) : std::nullopt;
}

bool appendText(sd_bus_message& message, const std::string& text) {
    return sd_bus_message_append(&message, "s", repairedText(text).c_str()) >= 0;
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
        return appendText(reply, text ? *text : std::string());
    }
    case Result::Dictionaries:
        return appendDictionaries(reply, value);
    }
    return false;
}

bool isLocalSignal(sd_bus_message& message, const char* name) {
    return sd_bus_message_is_signal(&message, "org.freedesktop.DBus.Local", name) > 0;
}

} // namespace velloren::wire
