#include "Platform/Views/Fonts.h"

#include "Platform/Views/PlainText.h"

#include <QFontDatabase>
#include <QFontMetrics>
#include <QGuiApplication>

#include <fontconfig/fontconfig.h>
#include <map>
#include <memory>
#include <optional>

namespace velloren::fonts {

namespace {

constexpr char32_t endOfLatin = 0x250;
constexpr char32_t firstPictograph = 0x1f000;
constexpr std::size_t mostScripts = 4; // in one text

struct Destroy {
    void operator()(FcCharSet* characters) const { FcCharSetDestroy(characters); }

    void operator()(FcPattern* pattern) const { FcPatternDestroy(pattern); }
};

using Characters = std::unique_ptr<FcCharSet, Destroy>;
using Pattern = std::unique_ptr<FcPattern, Destroy>;

/// None for what any font has or what has no script of its own; Common for emoji.
std::optional<QChar::Script> scriptOf(char32_t character) {
    if (character < endOfLatin)
        return std::nullopt;
    if (const auto script = QChar::script(character); script > QChar::Script_Latin)
        return script;
    const bool pictograph = character >= firstPictograph && QChar::category(character) == QChar::Symbol_Other;
    return pictograph ? std::optional(QChar::Script_Common) : std::nullopt;
}

std::map<QChar::Script, Characters> charactersByScript(const QString& text) {
    std::map<QChar::Script, Characters> found;
    for (const char32_t character : text.toUcs4()) {
        const auto script = scriptOf(character);
        if (!script || (found.size() == mostScripts && !found.contains(*script)))
            continue;
        Characters& characters = found[*script];
        if (!characters)
            characters.reset(FcCharSetCreate());
        FcCharSetAddChar(characters.get(), character);
    }
    return found;
}

/// The family that fontconfig takes for `family`; one that has the characters, where any has.
QString matchFor(const QString& family, const FcCharSet* characters) {
    const Pattern wanted(FcPatternCreate());
    const QByteArray name = family.toUtf8();
    FcPatternAddString(wanted.get(), FC_FAMILY, reinterpret_cast<const FcChar8*>(name.constData()));
    if (characters)
        FcPatternAddCharSet(wanted.get(), FC_CHARSET, characters);
    FcConfigSubstitute(nullptr, wanted.get(), FcMatchPattern);
    FcDefaultSubstitute(wanted.get());
    FcResult result = FcResultNoMatch;
    const Pattern match(FcFontMatch(nullptr, wanted.get(), &result));
    FcChar8* found = nullptr;
    if (!match || FcPatternGetString(match.get(), FC_FAMILY, 0, &found) != FcResultMatch)
        return family;
    return QString::fromUtf8(reinterpret_cast<const char*>(found));
}

/// The match for the first text in a script is kept for all: each takes a millisecond to find. A later text
/// with characters that it lacks finds them in the fonts that Qt tries next.
QString familyFor(const QString& family, QChar::Script script = QChar::Script_Unknown,
                  const FcCharSet* characters = nullptr) {
    static std::map<std::pair<QString, QChar::Script>, QString> known;
    const auto [entry, isNew] = known.try_emplace({family, script});
    if (isNew)
        entry->second = matchFor(family, characters);
    return entry->second;
}

} // namespace

void prepareFor(const QStringList& texts) {
    (void)QFontDatabase::hasFamily(QString()); // reads them all
    const QFont usual;
    for (const QString& text : texts) {
        const QString line = asOneLine(text, longestLine);
        if (const QFont font = withFamiliesFor(line, usual); font != usual)
            (void)QFontMetrics(font).horizontalAdvance(line);
    }
}

QFont withFamiliesFor(const QString& text, const QFont& font) {
    const auto scripts = charactersByScript(text);
    if (scripts.empty())
        return font;
    const QString usual = QGuiApplication::font().family();
    // By its real name: Qt takes an alias for missing, and the family after it for all of the text.
    QStringList families{familyFor(usual)};
    for (const auto& [script, characters] : scripts) {
        const QString family = script == QChar::Script_Common ? QStringLiteral("emoji") : usual;
        families.append(familyFor(family, script, characters.get()));
    }
    families.removeDuplicates();
    QFont result = font;
    result.setFamilies(families);
    return result;
}

} // namespace velloren::fonts
