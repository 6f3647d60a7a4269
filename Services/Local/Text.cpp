#include "Services/Local/Text.h"

#include "Platform/Foundation/Utf8.h"

#include <spdlog/fmt/fmt.h>
#include <unicode/uchar.h>

namespace velloren {

namespace {

std::string escapedBytes(std::string_view bytes) {
    std::string escaped;
    for (const char byte : bytes)
        escaped += fmt::format("\\x{:02x}", static_cast<unsigned char>(byte));
    return escaped;
}

bool breaksTheLine(UChar32 codePoint) {
    if (codePoint >= ' ' && codePoint <= '~')
        return false; // without ICU's tables: most lines need no more
    switch (u_charType(codePoint)) {
    case U_CONTROL_CHAR:
    case U_LINE_SEPARATOR:
    case U_PARAGRAPH_SEPARATOR:
        return true;
    default:
        return u_hasBinaryProperty(codePoint, UCHAR_BIDI_CONTROL);
    }
}

} // namespace

std::string printableLine(std::string_view text) {
    std::string line;
    for (std::size_t position = 0; position < text.size();) {
        const std::size_t start = position;
        const UChar32 codePoint = nextCodePoint(text, position);
        const std::string_view bytes = text.substr(start, position - start);
        if (codePoint < 0 || breaksTheLine(codePoint))
            line += escapedBytes(bytes);
        else
            line += bytes;
    }
    return line;
}

} // namespace velloren
