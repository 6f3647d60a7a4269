#include "Platform/Link/Endpoint.h"

#include <QByteArray>

#include <algorithm>
#include <sys/un.h>

namespace velloren {

namespace {

constexpr std::string_view transport = "unix:";
constexpr std::size_t longestName = sizeof(sockaddr_un::sun_path) - 1;
constexpr std::size_t longestAddress = transport.size() + 3 * longestName + 64;

/// The characters that an address may hold as they are.
bool isPlain(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
           std::string_view("-_/\\*.").find(c) != std::string_view::npos;
}

bool isHexDigit(char c) {
    return std::string_view("0123456789abcdefABCDEF").find(c) != std::string_view::npos;
}

std::optional<std::string> unescaped(std::string_view text) {
    for (std::string_view rest = text; !rest.empty();) {
        const bool isEscape = rest.size() > 2 && rest[0] == '%' && isHexDigit(rest[1]) && isHexDigit(rest[2]);
        if ((!isEscape && !isPlain(rest[0])) || rest.starts_with("%00"))
            return std::nullopt;
        rest.remove_prefix(isEscape ? 3 : 1);
    }
    return QByteArray::fromPercentEncoding(QByteArray(text.data(), qsizetype(text.size()))).toStdString();
}

std::string escaped(std::string_view text) {
    return QByteArray(text.data(), qsizetype(text.size())).toPercentEncoding("/", "~").toStdString();
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
