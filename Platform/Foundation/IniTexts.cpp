#include "Platform/Foundation/IniTexts.h"

#include <QString>
#include <QStringView>

#include <algorithm>
#include <optional>

namespace velloren {

namespace {

bool endsLine(QChar c) {
    return c == u'\n' || c == u'\r';
}

/// Takes the next line, which goes on behind its end within quotes and after a backslash, but for a comment.
QStringView takeLine(QStringView& rest) {
    rest = rest.trimmed();
    const bool isComment = rest.startsWith(u';');
    bool isQuoted = false;
    qsizetype end = 0;
    for (; end < rest.size() && (isQuoted || !endsLine(rest[end])); ++end) {
        if (rest[end] == u'"' && !isComment)
            isQuoted = !isQuoted;
        else if (rest[end] == u'\\' && !isComment)
            ++end;
    }
    const QStringView line = rest.first(std::min(end, rest.size()));
    rest = rest.sliced(line.size());
    return isComment ? QStringView() : line;
}

/// The number that the digits at the start of `rest` stand for, so many at most; they are taken.
std::optional<char16_t> takeNumber(QStringView& rest, int base, int digits) {
    constexpr QStringView all = u"0123456789abcdef";
    std::optional<char16_t> number;
    for (; digits > 0 && !rest.isEmpty(); --digits) {
        const int digit = int(all.indexOf(rest.front(), 0, Qt::CaseInsensitive));
        if (digit < 0 || digit >= base)
            break;
        number = char16_t(number.value_or(0) * base + digit);
        rest = rest.sliced(1);
    }
    return number;
}

QString unescapedKey(QStringView text) {
    QString key;
    while (!text.isEmpty()) {
        const QChar c = text.front();
        QStringView behind = text.sliced(1);
        const bool isLong = behind.startsWith(u'U');
        if (isLong)
            behind = behind.sliced(1);
        const auto number = c == u'%' ? takeNumber(behind, 16, isLong ? 4 : 2) : std::nullopt;
        key += number ? QChar(*number) : c == u'\\' ? QChar(u'/') : c;
        text = number ? behind : text.sliced(1);
    }
    return key;
}

/// What the escape after a backslash stands for, if anything; it is taken from `rest`.
std::optional<QChar> takeEscape(QStringView& rest) {
    constexpr QStringView names = u"abfnrtv";
    constexpr QStringView meanings = u"\a\b\f\n\r\t\v";
    if (const auto octal = takeNumber(rest, 8, 6))
        return *octal;
    if (rest.isEmpty())
        return std::nullopt;
    const QChar c = rest.front();
    rest = rest.sliced(1);
    if (c == u'x')
        return takeNumber(rest, 16, 4);
    if (endsLine(c))
        return std::nullopt;
    const qsizetype index = names.indexOf(c);
    return index >= 0 ? meanings[index] : c;
}

/// None for a list.
std::optional<QString> unescapedValue(QStringView rest) {
    QString value;
    qsizetype significant = 0; // its length without blanks at the end
    bool isQuoted = false;
    rest = rest.trimmed();
    while (!rest.isEmpty() && (isQuoted || rest.front() != u';')) {
        const QChar c = rest.front();
        rest = rest.sliced(1);
        if (!isQuoted && c == u',')
            return std::nullopt;
        const std::optional<QChar> meant = c == u'\\' ? takeEscape(rest) : c;
        if (c == u'"')
            isQuoted = !isQuoted;
        else if (meant)
            value += *meant;
        if (isQuoted || !c.isSpace())
            significant = value.size();
    }
    value.truncate(significant);
    return value;
}

/// None for what describes a value of another type, or holds a NUL.
std::optional<QString> textIn(const QString& value) {
    if (value.contains(QChar::Null) ||
        (value.startsWith(u'@') && value.endsWith(u')') && !value.startsWith(u"@@")))
        return std::nullopt;
    return value.startsWith(u"@@") ? value.sliced(1) : value;
}

QString groupIn(QStringView line) {
    const QStringView name = line.sliced(1).first(std::max<qsizetype>(line.indexOf(u']') - 1, 0)).trimmed();
    if (name.compare(u"general", Qt::CaseInsensitive) == 0)
        return {};
    const bool isNamedGeneral = name.compare(u"%general", Qt::CaseInsensitive) == 0;
    return unescapedKey(isNamedGeneral ? name.sliced(1) : name) + u'/';
}

} // namespace

std::map<std::string, std::string, std::less<>> textsInIni(const std::string& contents) {
    std::map<std::string, std::string, std::less<>> texts;
    const QString decoded = QString::fromStdString(contents);
    QString group;
    for (QStringView rest = decoded; !rest.isEmpty();) {
        const QStringView line = takeLine(rest);
        const qsizetype equals = line.indexOf(u'=', 1);
        if (line.startsWith(u'['))
            group = groupIn(line);
        else if (equals > 0) {
            const std::string key = (group + unescapedKey(line.first(equals).trimmed())).toStdString();
            const auto value = unescapedValue(line.sliced(equals + 1));
            const auto text = value ? textIn(*value) : std::nullopt;
            texts.erase(key);
            if (text)
                texts.emplace(key, text->toStdString());
        }
    }
    return texts;
}

} // namespace velloren
