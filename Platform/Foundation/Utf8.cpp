#include "Platform/Foundation/Utf8.h"

#include <unicode/utf.h>
#include <unicode/utf8.h>

namespace velloren {

namespace {

bool canTravel(std::int32_t codePoint) {
    return codePoint > 0 && !U_IS_UNICODE_NONCHAR(codePoint);
}

} // namespace

// The macro narrows an int.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"

std::int32_t nextCodePoint(std::string_view text, std::size_t& position) {
    std::int32_t codePoint = 0;
    U8_NEXT(text.data(), position, text.size(), codePoint);
    return codePoint;
}

#pragma GCC diagnostic pop

bool isPlainText(std::string_view text) {
    for (std::size_t position = 0; position < text.size();) {
        if (!canTravel(nextCodePoint(text, position)))
            return false;
    }
    return true;
}

std::string repairedText(std::string_view text) {
    std::string repaired;
    for (std::size_t position = 0; position < text.size();) {
        const std::size_t start = position;
        const bool travels = canTravel(nextCodePoint(text, position));
        repaired += travels ? text.substr(start, position - start) : "\uFFFD";
    }
    return repaired;
}

} // namespace velloren
