#include "Platform/Foundation/CurrentLocale.h"

#include <QLocale>
#include <unicode/dtptngen.h>
#include <unicode/locid.h>
#include <unicode/timezone.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <utility>

namespace velloren {

namespace {

constexpr const char* localTime = "/etc/localtime";

HourCycle& desktopHourCycle() {
    static HourCycle cycle = HourCycle::FromLocale;
    return cycle;
}

std::string nameFromEnvironment() {
    for (const char* variable : {"LC_ALL", "LC_TIME", "LANG"}) {
        const char* value = std::getenv(variable);
        if (value && value[0] != '\0')
            return value;
    }
    return {};
}

std::string scriptOfModifier(std::string_view modifier) {
    if (modifier == "latin")
        return "_Latn";
    if (modifier == "cyrillic")
        return "_Cyrl";
    if (modifier == "devanagari")
        return "_Deva";
    return {};
}

/// Cuts `text` before `mark` and hands out what stood behind it.
std::string_view cutAt(char mark, std::string_view& text) {
    const std::size_t position = text.find(mark);
    if (position == std::string_view::npos)
        return {};
    const std::string_view behind = text.substr(position + 1);
    text = text.substr(0, position);
    return behind;
}

// language[_territory][.codeset][@modifier] -> language[_script][_territory]
std::optional<std::string> icuIdentifierOf(std::string_view name) {
    const std::string_view modifier = cutAt('@', name);
    cutAt('.', name);
    const icu::Locale locale(std::string(name).c_str());
    if (*locale.getISO3Language() == '\0')
        return std::nullopt;
    std::string identifier = locale.getLanguage() + scriptOfModifier(modifier);
    if (*locale.getCountry() != '\0')
        identifier.append("_").append(locale.getCountry());
    return identifier;
}

std::string hoursOf(HourCycle cycle) {
    switch (cycle) {
    case HourCycle::TwelveHour:
        return "@hours=h12";
    case HourCycle::TwentyFourHour:
        return "@hours=h23";
    case HourCycle::FromLocale:
        break;
    }
    return {};
}

std::optional<std::string> hourPatternOf(const std::string& identifier) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::DateTimePatternGenerator> generator(
        icu::DateTimePatternGenerator::createInstance(icu::Locale(identifier.c_str()), status));
    if (U_FAILURE(status))
        return std::nullopt;
    const icu::UnicodeString pattern = generator->getBestPattern(icu::UnicodeString(u"j"), status);
    std::string text;
    return U_SUCCESS(status) ? std::optional(pattern.toUTF8String(text)) : std::nullopt;
}

// Changes whenever the zone may have: a zone is set by replacing the link, the file, or the variable.
std::string timeZoneSource() {
    const char* variable = std::getenv("TZ");
    std::string source = variable ? std::string("TZ=") + variable : std::string();

    std::error_code error;
    source += '\n' + std::filesystem::read_symlink(localTime, error).string();

    struct stat status {};

    if (::stat(localTime, &status) == 0) {
        for (const auto value :
             {static_cast<long long>(status.st_dev), static_cast<long long>(status.st_ino),
              static_cast<long long>(status.st_mtim.tv_sec), static_cast<long long>(status.st_mtim.tv_nsec)})
            source += '\n' + std::to_string(value);
    }
    return source;
}

} // namespace

std::string CurrentLocale::identifier() {
    const auto locale = icuIdentifierOf(nameFromEnvironment());
    const HourCycle cycle = desktopHourCycle();
    if (locale)
        return *locale + hoursOf(cycle);
    return "en_US_POSIX" + hoursOf(cycle == HourCycle::FromLocale ? HourCycle::TwentyFourHour : cycle);
}

std::optional<std::string> CurrentLocale::hourPattern() {
    static std::string knownIdentifier;
    static std::optional<std::string> knownPattern;
    std::string current = identifier();
    if (current != knownIdentifier) {
        knownPattern = hourPatternOf(current);
        knownIdentifier = std::move(current);
    }
    return knownPattern;
}

bool CurrentLocale::runsRightToLeft() {
    return QLocale(QLocale().uiLanguages().value(0)).textDirection() == Qt::RightToLeft;
}

void CurrentLocale::setHourCycle(HourCycle cycle) {
    desktopHourCycle() = cycle;
}

void CurrentLocale::followTimeZone() {
    static std::optional<std::string> knownSource;
    std::string source = timeZoneSource();
    if (source == knownSource)
        return;
    icu::TimeZone::adoptDefault(icu::TimeZone::detectHostTimeZone());
    knownSource = std::move(source);
}

} // namespace velloren
