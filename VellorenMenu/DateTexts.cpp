#include "VellorenMenu/DateTexts.h"

#include "Platform/Foundation/CurrentLocale.h"
#include "Platform/Foundation/FatalError.h"

#include <unicode/calendar.h>
#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>

#include <cstdint>
#include <memory>

namespace velloren {

namespace {

icu::Locale currentLocale() {
    return icu::Locale(CurrentLocale::identifier().c_str());
}

UDate momentOf(Date date) {
    return static_cast<UDate>(date.time_since_epoch().count());
}

std::string formatted(Date date, const std::string& pattern, const icu::Locale& locale) {
    CurrentLocale::followTimeZone();
    UErrorCode status = U_ZERO_ERROR;
    const icu::SimpleDateFormat formatter(icu::UnicodeString::fromUTF8(pattern), locale, status);
    if (U_FAILURE(status))
        fatalError("the date formats of ICU are missing");

    icu::UnicodeString text;
    std::string result;
    return formatter.format(momentOf(date), text).toUTF8String(result);
}

std::string formattedWithTime(Date date, const std::string& prefix) {
    const std::string hour = isAMPMFormat() ? "h" : "HH";
    return formatted(date, appendingAMPMIfNeeded(prefix + hour + ":mm"), currentLocale());
}

std::unique_ptr<icu::Calendar> currentCalendar() {
    CurrentLocale::followTimeZone();
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Calendar> calendar(icu::Calendar::createInstance(currentLocale(), status));
    if (U_FAILURE(status))
        fatalError("the calendars of ICU are missing");
    return calendar;
}

int dayOfMonth(icu::Calendar& calendar, Date date) {
    UErrorCode status = U_ZERO_ERROR;
    calendar.setTime(momentOf(date), status);
    return calendar.get(UCAL_DAY_OF_MONTH, status);
}

enum class Day { Today, Tomorrow, Other };

Day dayAsSeenOn(int today, int meetingDay) {
    return meetingDay == today ? Day::Today : meetingDay == today + 1 ? Day::Tomorrow : Day::Other;
}

} // namespace

bool isAMPMFormat() {
    const auto pattern = CurrentLocale::hourPattern();
    return pattern && pattern->find('a') != std::string::npos;
}

std::string appendingAMPMIfNeeded(const std::string& format) {
    return isAMPMFormat() ? format + " a" : format;
}

std::string hhmm(Date date) {
    return formattedWithTime(date, "");
}

std::string dMMMhhmm(Date date) {
    return formattedWithTime(date, "d MMM, ");
}

std::string compactDayNameDateAndTimeForMenuIconApp(Date date) {
    return formattedWithTime(date, "EEE dd MMM, ");
}

std::string compactDayNameAndDateString(Date date) {
    return formatted(date, "EEEE  d MMMM, YYYY", icu::Locale("en_US"));
}

std::string relativeDate(Date meeting, Date now) {
    const auto calendar = currentCalendar();
    const int meetingDay = dayOfMonth(*calendar, meeting);
    switch (dayAsSeenOn(dayOfMonth(*calendar, now), meetingDay)) {
    case Day::Today:
        return "Today at " + hhmm(meeting);
    case Day::Tomorrow:
        return "Tomorrow at " + hhmm(meeting);
    case Day::Other:
        break;
    }
    return compactDayNameDateAndTimeForMenuIconApp(meeting);
}

std::optional<std::string> relativeDate(const std::string& startTime, Date now) {
    const auto start = meetingDateFormatter().dateFromString(startTime);
    return start ? std::optional(relativeDate(*start, now)) : std::nullopt;
}

Date nextChangeOfRelativeDate(Date meeting, Date now) {
    const auto calendar = currentCalendar();
    const int meetingDay = dayOfMonth(*calendar, meeting);
    int today = dayOfMonth(*calendar, now);
    const Day dayNow = dayAsSeenOn(today, meetingDay);
    for (const auto field : {UCAL_HOUR_OF_DAY, UCAL_MINUTE, UCAL_SECOND, UCAL_MILLISECOND})
        calendar->set(field, 0);
    UErrorCode status = U_ZERO_ERROR;
    do {
        calendar->add(UCAL_DATE, 1, status);
        today = calendar->get(UCAL_DAY_OF_MONTH, status);
    } while (U_SUCCESS(status) && dayAsSeenOn(today, meetingDay) == dayNow); // two months at most
    return Date(Date::duration(std::int64_t(calendar->getTime(status))));
}

} // namespace velloren
