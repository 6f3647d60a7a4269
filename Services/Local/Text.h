#pragma once

#include <string>
#include <string_view>

/// Texts that other people or programs wrote. Any thread.
namespace velloren {

/// Whether `text` is valid UTF-8 without a NUL, and so can travel over the link unchanged.
[[nodiscard]] bool isPlainText(std::string_view text);

/// `text` as valid UTF-8 without a NUL: U+FFFD stands for what was not.
[[nodiscard]] std::string repairedText(std::string_view text);

/// `text` as one printable line: control characters, line breaks, marks that reorder text and bytes that are
/// not UTF-8 are written as escapes (\n, \x1b, \u2028).
[[nodiscard]] std::string printableLine(std::string_view text);

} // namespace velloren
