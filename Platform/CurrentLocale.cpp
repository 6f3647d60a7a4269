#include "Platform/CurrentLocale.h"

#include <unicode/timezone.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <regex>
#include <string_view>
#include <sys/stat.h>
#include <system_error>

namespace velloren {

namespace {

constexpr const char* localTime = "/etc/localtime";
constexpr std::size_t longestName = 64;

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

// language[_territory][.codeset][@modifier] -> language[_script][_territory]
std::optional<std::string> icuIdentifierOf(const std::string& name) {
    static const std::regex form("([a-z]{2,3})(_(?:[A-Z]{2}|[0-9]{3}))?(?:\\.[A-Za-z0-9-]+)?(?:@([a-z]+))?");
    std::smatch parts;
    if (name.size() > longestName || !std::regex_match(name, parts, form))
        return std::nullopt;
    return parts.str(1) + scriptOfModifier(parts.str(3)) + parts.str(2);
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
