#include "Platform/Link/Endpoint.h"

#include <algorithm>
#include <cstdint>
#include <sys/un.h>

namespace velloren {

namespace {

constexpr std::string_view transport = "unix:";
constexpr std::size_t longestName = sizeof(sockaddr_un::sun_path) - 1;
constexpr std::size_t longestAddress = transport.size() + 3 * longestName + 64;

std::optional<unsigned> hexDigit(char digit) {
    if (digit >= '0' && digit <= '9')
        return unsigned(digit - '0');
    if (digit >= 'a' && digit <= 'f')
        return unsigned(digit - 'a') + 10;
    if (digit >= 'A' && digit <= 'F')
        return unsigned(digit - 'A') + 10;
    return std::nullopt;
}

/// The characters that an address may hold as they are.
bool isPlain(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
           std::string_view("-_/\\*.").find(c) != std::string_view::npos;
}

std::optional<std::string> unescaped(std::string_view text) {
    std::string result;
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (isPlain(text[index])) {
            result += text[index];
            continue;
        }
        if (text[index] != '%' || index + 2 >= text.size())
            return std::nullopt;
        const auto high = hexDigit(text[index + 1]);
        const auto low = hexDigit(text[index + 2]);
        if (!high || !low || (*high == 0 && *low == 0))
            return std::nullopt;
        result += static_cast<char>(static_cast<std::uint8_t>(*high << 4U | *low));
        index += 2;
    }
    return result;
}

std::string escaped(std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string result;
    for (const char c : text) {
        if (isPlain(c)) {
            result += c;
            continue;
        }
        const auto byte = static_cast<std::uint8_t>(c);
        result += '%';
        result += digits[byte >> 4U];
        result += digits[byte & 15U];
    }
    return result;
}

struct Fields {
    std::optional<std::string> path;
    std::optional<std::string> abstract;
    std::optional<std::string> guid;
};

/// None for a key that is unknown or stands twice, or a value that is not well escaped.
std::optional<Fields> fieldsOf(std::string_view text) {
    Fields fields;
    while (!text.empty()) {
        const std::string_view field = text.substr(0, text.find(','));
        text.remove_prefix(std::min(text.size(), field.size() + 1));
        const std::size_t equals = field.find('=');
        if (equals == std::string_view::npos)
            return std::nullopt;
        const std::string_view key = field.substr(0, equals);
        std::optional<std::string>* slot = key == "path"       ? &fields.path
                                           : key == "abstract" ? &fields.abstract
                                           : key == "guid"     ? &fields.guid
                                                               : nullptr;
        if (!slot || *slot)
            return std::nullopt;
        *slot = unescaped(field.substr(equals + 1));
        if (!*slot)
            return std::nullopt;
    }
    return fields;
}

} // namespace

std::optional<Endpoint> Endpoint::parse(std::string_view address) {
    if (!address.starts_with(transport) || address.size() > longestAddress)
        return std::nullopt;
    const auto fields = fieldsOf(address.substr(transport.size()));
    if (!fields || fields->path.has_value() == fields->abstract.has_value())
        return std::nullopt;
    if (fields->path && !fields->path->starts_with('/'))
        return std::nullopt;
    const std::string name = fields->path ? *fields->path : std::string(1, '\0') + *fields->abstract;
    if (name.size() < 2 || name.size() > longestName)
        return std::nullopt;
    return Endpoint(std::string(address), name);
}

std::optional<Endpoint> Endpoint::ofSocketPath(std::string_view path) {
    return parse(std::string(transport) + "path=" + escaped(path));
}

} // namespace velloren
