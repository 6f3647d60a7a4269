#include "Platform/Foundation/IniTexts.h"

#include <QString>
#include <QStringView>

#include <algorithm>
#include <string_view>
#include <vector>

namespace velloren {

namespace {

constexpr std::string_view blanks = " \t\r\n";

bool endsLine(char16_t c) {
    return c == u'\n' || c == u'\r';
}

/// Takes the next line with its end. It goes on behind that within quotes and after a backslash, but for a
/// comment.
std::string_view takeLine(std::string_view& rest) {
    std::size_t end = std::min(rest.find_first_not_of(blanks), rest.size());
    const bool isComment = rest.substr(end).starts_with(';');
    bool isQuoted = false;
    for (; end < rest.size() && (isQuoted || !endsLine(char16_t(rest[end]))); ++end) {
        if (rest[end] == '"' && !isComment)
            isQuoted = !isQuoted;
        else if (rest[end] == '\\' && !isComment)
            ++end;
    }
    end += rest.substr(std::min(end, rest.size())).starts_with("\r\n") ? 2 : 1;
    const std::string_view line = rest.substr(0, end);
    rest.remove_prefix(line.size());
    return line;
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
    if (endsLine(c.unicode()))
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

struct Line {
    std::string_view text;            ///< as it stands in the file, its end included
    std::string group;                ///< that it is in or begins, with the "/" behind it
    std::string key;                  ///< with the group; empty where it sets nothing
    std::optional<std::string> value; ///< none also for what is no text
};

std::vector<Line> linesOf(std::string_view contents) {
    std::vector<Line> lines;
    QString group;
    while (!contents.empty()) {
        const std::string_view text = takeLine(contents);
        const QString decoded = QString::fromUtf8(text.data(), qsizetype(text.size())).trimmed();
        const qsizetype equals = decoded.startsWith(u';') ? -1 : decoded.indexOf(u'=', 1);
        if (decoded.startsWith(u'['))
            group = groupIn(decoded);
        Line& line = lines.emplace_back(Line{text, group.toStdString(), {}, {}});
        if (decoded.startsWith(u'[') || equals <= 0)
            continue;
        const QStringView whole = decoded;
        line.key = (group + unescapedKey(whole.first(equals).trimmed())).toStdString();
        const auto value = unescapedValue(whole.sliced(equals + 1));
        if (const auto plain = value ? textIn(*value) : std::nullopt)
            line.value = plain->toStdString();
    }
    return lines;
}

bool isPlain(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
           std::string_view("+-.@_").find(c) != std::string_view::npos;
}

std::string escapedValue(const std::string& text) {
    std::string escaped = text.starts_with('@') ? "@" : "";
    for (const char c : text) {
        if (endsLine(char16_t(c)) || c == '"' || c == '\\')
            escaped += '\\';
        escaped += c == '\n' ? 'n' : c == '\r' ? 'r' : c;
    }
    return std::all_of(text.begin(), text.end(), isPlain) ? escaped : '"' + escaped + '"';
}

} // namespace

std::map<std::string, std::string, std::less<>> textsInIni(const std::string& contents) {
    std::map<std::string, std::string, std::less<>> texts;
    for (const Line& line : linesOf(contents)) {
        texts.erase(line.key);
        if (line.value)
            texts.emplace(line.key, *line.value);
    }
    return texts;
}

std::string iniWithText(const std::string& contents, const std::string& key,
                        const std::optional<std::string>& text) {
    const std::string group = key.substr(0, key.find('/') + 1);
    std::string changed;
    std::optional<std::size_t> place; // behind what there is of the group
    if (group.empty())
        place = 0;
    for (const Line& line : linesOf(contents)) {
        if (line.key != key)
            changed += line.text;
        if (line.group == group)
            place = changed.size();
    }
    if (!text)
        return changed;
    std::string entry = key.substr(group.size()) + "=" + escapedValue(*text) + "\n";
    if (!place)
        entry.insert(0, "[" + group.substr(0, group.size() - 1) + "]\n");
    const std::size_t position = place.value_or(changed.size());
    if (position > 0 && !endsLine(char16_t(changed[position - 1])))
        entry.insert(0, "\n");
    return changed.insert(position, entry);
}

} // namespace velloren
