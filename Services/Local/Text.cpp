#include "Services/Local/Text.h"

#include <spdlog/fmt/fmt.h>
#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <cstdint>

namespace velloren {

namespace {

// The macro narrows an int.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"

/// The code point at `position`, which moves behind it; negative where the bytes are not UTF-8.
UChar32 nextCodePoint(std::string_view text, std::size_t& position) {
    UChar32 codePoint = 0;
    U8_NEXT(text.data(), position, text.size(), codePoint);
    return codePoint;
}

#pragma GCC diagnostic pop

/// Calls `visit` with each code point and its bytes.
template <class Visitor>
void forEachCodePoint(std::string_view text, Visitor visit) {
    for (std::size_t position = 0; position < text.size();) {
        const std::size_t start = position;
        const UChar32 codePoint = nextCodePoint(text, position);
        visit(codePoint, text.substr(start, position - start));
    }
}

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

std::string escaped(UChar32 codePoint, std::string_view bytes) {
    switch (codePoint) {
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    default:
        return bytes.size() == 1 ? escapedBytes(bytes)
                                 : fmt::format("\\u{:04x}", static_cast<std::uint32_t>(codePoint));
    }
}

} // namespace

bool isPlainText(std::string_view text) {
    bool plain = true;
    forEachCodePoint(text, [&](UChar32 codePoint, std::string_view) { plain = plain && codePoint > 0; });
    return plain;
}

std::string repairedText(std::string_view text) {
    std::string repaired;
    forEachCodePoint(text, [&](UChar32 codePoint, std::string_view bytes) {
        repaired += codePoint > 0 ? bytes : "\uFFFD";
    });
    return repaired;
}

std::string printableLine(std::string_view text) {
    std::string line;
    forEachCodePoint(text, [&](UChar32 codePoint, std::string_view bytes) {
        if (codePoint < 0)
            line += escapedBytes(bytes);
        else if (breaksTheLine(codePoint))
            line += escaped(codePoint, bytes);
        else
            line += bytes;
    });
    return line;
}

} // namespace velloren
