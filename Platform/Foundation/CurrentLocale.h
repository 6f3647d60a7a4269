#pragma once

#include <optional>
#include <string>

namespace velloren {

/// How the desktop's clock counts the hours.
enum class HourCycle { FromLocale, TwelveHour, TwentyFourHour };

/// The user's locale for dates and times, always as it is at this moment. Main thread only.
class CurrentLocale {
  public:
    /// An ICU locale identifier, for example "de_DE" or "en_US@hours=h23". It comes from the first of LC_ALL,
    /// LC_TIME and LANG that is set, and from the hour cycle. "C" and what is no locale name read as US
    /// English with the 24-hour clock, which is how the C library prints times there.
    [[nodiscard]] static std::string identifier();

    /// How that locale prefers to write the hour of the day, a date pattern such as "h a" or "HH"; none where
    /// ICU cannot tell. ICU takes long to find it out: it is asked once for each locale after another.
    [[nodiscard]] static std::optional<std::string> hourPattern();

    /// Whether the language of the desktop's texts is written from right to left: bars are mirrored then.
    [[nodiscard]] static bool runsRightToLeft();

    /// Follows the desktop's clock setting; from the locale until it is first called.
    static void setHourCycle(HourCycle cycle);

    /// Makes ICU's default time zone the machine's, for what is formatted from now on. Cheap unless TZ or
    /// /etc/localtime changed since the last call.
    static void followTimeZone();
};

} // namespace velloren
