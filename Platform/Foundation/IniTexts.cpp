#include "Platform/Foundation/IniTexts.h"

#include "Platform/Foundation/Utf8.h"

#include <QString>
#include <QStringView>

#include <algorithm>
#include <cctype>
#include <string_view>
#include <vector>

namespace velloren {

namespace {

/// What the escape after a backslash stands for; it is taken from `rest`.
QChar takeEscape(QStringView& rest) {
    constexpr QStringView names = u"nrt";
    constexpr QStringView meanings = u"\n\r\t";
    const QChar name = rest.front();
    rest = rest.sliced(1);
    if (name == u'x') {
        const auto* const end =
            std::find_if_not(rest.begin(), rest.begin() + std::min<qsizetype>(rest.size(), 4),
                             [](QChar c) { return std::isxdigit(uchar(c.toLatin1())); });
        const QStringView digits = rest.first(end - rest.begin());
        rest = rest.sliced(digits.size());
        return QChar(digits.toUShort(nullptr, 16));
    }
    const qsizetype index = names.indexOf(name);
    return index >= 0 ? meanings[index] : name;
}

/// None for a list, for what describes a value of another type, and for what is no plain text.
std::optional<std::string> textOf(QStringView written) {
    const bool isQuoted = written.size() > 1 && written.startsWith(u'"') && written.endsWith(u'"');
    if (isQuoted)
        written = written.sliced(1).chopped(1);
    QString text;
    while (!written.isEmpty()) {
        const QChar c = written.front();
        written = written.sliced(1);
        if (c == u'"' || (c == u',' && !isQuoted))
            return std::nullopt;
        text += c == u'\\' && !written.isEmpty() ? takeEscape(written) : c;
    }
    const bool startsWithSign = text.startsWith(u"@@");
    const bool isDescription = !startsWithSign && text.startsWith(u'@') && text.endsWith(u')');
    const std::string plain = text.sliced(startsWithSign ? 1 : 0).toStdString();
    return isDescription || !isPlainText(plain) ? std::nullopt : std::optional(plain);
}

std::string groupIn(QStringView line) {
    const QString name =
        line.sliced(1).first(std::max<qsizetype>(line.indexOf(u']') - 1, 0)).trimmed().toString();
    return name.compare(u"general", Qt::CaseInsensitive) == 0 ? std::string() : name.toStdString() + "/";
}

struct Line {
    std::string_view text;            ///< as it stands in the file, its end included
    std::string group;                ///< that it is in or begins, with the "/" behind it
    std::string key;                  ///< with the group; empty where it sets nothing
    std::optional<std::string> value; ///< none also for what is no text
};

std::vector<Line> linesOf(std::string_view contents) {
    std::vector<Line> lines;
    std::string group;
    while (!contents.empty()) {
        const std::string_view text =
            contents.substr(0, std::min(contents.find('\n'), contents.size() - 1) + 1);
        contents.remove_prefix(text.size());
        const QString decoded = QString::fromUtf8(text.data(), qsizetype(text.size())).trimmed();
        const qsizetype equals = decoded.indexOf(u'=');
        if (decoded.startsWith(u'['))
            group = groupIn(decoded);
        Line& line = lines.emplace_back(Line{text, group, {}, {}});
        if (decoded.startsWith(u'[') || decoded.startsWith(u';') || equals <= 0)
            continue;
        const QStringView whole = decoded;
        line.key = group + whole.first(equals).trimmed().toString().toStdString();
        line.value = textOf(whole.sliced(equals + 1).trimmed());
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
        if (c == '\n' || c == '\r' || c == '"' || c == '\\')
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
    if (position > 0 && changed[position - 1] != '\n')
        entry.insert(0, "\n");
    return changed.insert(position, entry);
}

} // namespace velloren
