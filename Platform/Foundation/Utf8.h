#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Texts that other people or programs wrote, as bytes. Any thread.
namespace velloren {

/// The code point at `position`, which moves behind it; negative where the bytes are not UTF-8.
[[nodiscard]] std::int32_t nextCodePoint(std::string_view text, std::size_t& position);

/// Whether `text` can travel over the link unchanged: valid UTF-8 without NUL and without noncharacters
/// (U+FDD0 to U+FDEF, the last two code points of each plane), which D-Bus libraries refuse.
[[nodiscard]] bool isPlainText(std::string_view text);

/// `text` as one that can travel: U+FFFD stands for what could not.
[[nodiscard]] std::string repairedText(std::string_view text);

} // namespace velloren
