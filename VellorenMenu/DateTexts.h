#pragma once

#include "Services/VFoundation.h"

#include <optional>
#include <string>

/// Every text form of a date. Texts are UTF-8, in the machine's local time zone and, unless stated otherwise,
/// in the user's current locale with its calendar; the user's choice of a 12- or 24-hour clock is honoured.
/// Main thread only.
namespace velloren {

/// Durations in seconds.
inline constexpr double tenMinutes = 600.0;
inline constexpr double oneMinute = 60.0;

/// Whether the user's clock counts twelve hours and needs an AM/PM marker.
[[nodiscard]] bool isAMPMFormat();

/// `format`, a date pattern, with the AM/PM marker where the user's clock needs one.
[[nodiscard]] std::string appendingAMPMIfNeeded(const std::string& format);

/// The time of day: "2:05 PM" or "14:05".
[[nodiscard]] std::string hhmm(Date date);

/// Day, short month and time: "7 Mar, 14:05".
[[nodiscard]] std::string dMMMhhmm(Date date);

/// Short day name, two-digit day, short month and time: "Mon 07 Mar, 14:05".
[[nodiscard]] std::string compactDayNameDateAndTimeForMenuIconApp(Date date);

/// Full day name, day, full month name and week-based year, always in US English: "Monday  7 March, 2016".
[[nodiscard]] std::string compactDayNameAndDateString(Date date);

/// When a meeting starts, as its row says it at the moment `now`: today or tomorrow with the time, else day
/// and time. Only the day of the month is compared: the same day of another month is today, and the first of
/// a month is never tomorrow.
[[nodiscard]] std::string relativeDate(Date meeting, Date now);

/// The same of a start as meetings have it. None where it cannot be read.
[[nodiscard]] std::optional<std::string> relativeDate(const std::string& startTime, Date now);

/// The midnight after `now` at which `relativeDate` begins to say something else.
[[nodiscard]] Date nextChangeOfRelativeDate(Date meeting, Date now);

} // namespace velloren
