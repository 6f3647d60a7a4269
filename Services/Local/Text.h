#pragma once

#include <string>
#include <string_view>

namespace velloren {

/// `text` as one printable line: control characters, line breaks, marks that reorder text and bytes that are
/// not UTF-8 are written as the escapes of their bytes (\x0a, \xe2\x80\xa8). Any thread.
[[nodiscard]] std::string printableLine(std::string_view text);

} // namespace velloren
