#include "Platform/Views/PlainText.h"

#include <algorithm>

namespace velloren {

QString cut(const QString& text, qsizetype length) {
    if (text.size() <= length)
        return text;
    const bool splitsPair = text.at(length - 1).isHighSurrogate();
    return text.left(splitsPair ? length - 1 : length) + QChar(0x2026);
}

QString asOneLine(const QString& text, qsizetype length) {
    QString line = cut(text, length);
    std::replace_if(
        line.begin(), line.end(),
        [](QChar c) {
            return c.category() == QChar::Other_Control || c == QChar::LineSeparator ||
                   c == QChar::ParagraphSeparator;
        },
        QLatin1Char(' '));
    return line;
}

} // namespace velloren
