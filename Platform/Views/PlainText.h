#pragma once

#include <QString>

namespace velloren {

/// In characters. Texts come from other people and have no bound; nothing is wide enough for more on one
/// line.
inline constexpr qsizetype longestLine = 512;

/// The first `length` characters of the text, then an ellipsis where that leaves some out.
[[nodiscard]] QString cut(const QString& text, qsizetype length);

/// The same as one line: line breaks and other control characters read as blanks.
[[nodiscard]] QString asOneLine(const QString& text, qsizetype length);

} // namespace velloren
