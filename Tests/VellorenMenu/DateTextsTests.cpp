#include "Platform/Foundation/CurrentLocale.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "VellorenMenu/DateTexts.h"

#include <gtest/gtest.h>
#include <unicode/locid.h>

#include <chrono>
#include <string>

namespace velloren {
namespace {

using namespace std::chrono_literals;
using std::chrono::hours;
using std::chrono::minutes;

class DateTexts : public testing::Test {
  protected:
    ~DateTexts() override { CurrentLocale::setHourCycle(HourCycle::FromLocale); }

    // Berlin's wall clock in winter.
    static Date at(int year, unsigned month, unsigned day, int hour, int minute) {
        const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(month),
                                               std::chrono::day(day)};
        return Date(std::chrono::sys_days(date) + hours(hour - 1) + minutes(minute));
    }

    EnvironmentVariable locale{"LC_ALL", "en_GB.UTF-8"};
    EnvironmentVariable zone{"TZ", "Europe/Berlin"};
    const Date monday = at(2016, 3, 7, 14, 5);
};

struct Texts {
    const char* locale;
    HourCycle hours;
    const char* time;
    const char* dayAndTime;
    const char* menuIcon;
};

TEST_F(DateTexts, FollowLocaleAndClock) {
    const Texts table[] = {
        {"en_US.UTF-8", HourCycle::FromLocale, "2:05 PM", "7 Mar, 2:05 PM", "Mon 07 Mar, 2:05 PM"},
        {"en_US.UTF-8", HourCycle::TwentyFourHour, "14:05", "7 Mar, 14:05", "Mon 07 Mar, 14:05"},
        {"en_US.UTF-8", HourCycle::TwelveHour, "2:05 PM", "7 Mar, 2:05 PM", "Mon 07 Mar, 2:05 PM"},
        {"en_GB.UTF-8", HourCycle::FromLocale, "14:05", "7 Mar, 14:05", "Mon 07 Mar, 14:05"},
        {"en_GB.UTF-8", HourCycle::TwelveHour, "2:05 pm", "7 Mar, 2:05 pm", "Mon 07 Mar, 2:05 pm"},
        {"de_DE.UTF-8", HourCycle::FromLocale, "14:05", "7 März, 14:05", "Mo. 07 März, 14:05"},
        {"de_DE.UTF-8", HourCycle::TwelveHour, "2:05 PM", "7 März, 2:05 PM", "Mo. 07 März, 2:05 PM"},
        {"ja_JP.UTF-8", HourCycle::FromLocale, "14:05", "7 3月, 14:05", "月 07 3月, 14:05"},
        {"ja_JP.UTF-8", HourCycle::TwelveHour, "2:05 午後", "7 3月, 2:05 午後", "月 07 3月, 2:05 午後"},
        {"ar_EG.UTF-8", HourCycle::FromLocale, "٢:٠٥ م", "٧ مارس, ٢:٠٥ م", "الاثنين ٠٧ مارس, ٢:٠٥ م"},
        {"ar_EG.UTF-8", HourCycle::TwentyFourHour, "١٤:٠٥", "٧ مارس, ١٤:٠٥", "الاثنين ٠٧ مارس, ١٤:٠٥"},
        {"zh_TW.UTF-8", HourCycle::FromLocale, "2:05 下午", "7 3月, 2:05 下午", "週一 07 3月, 2:05 下午"},
        {"zh_TW.UTF-8", HourCycle::TwentyFourHour, "14:05", "7 3月, 14:05", "週一 07 3月, 14:05"},
        {"fa_IR.UTF-8", HourCycle::FromLocale, "۱۴:۰۵", "۱۷ اسفند, ۱۴:۰۵", "دوشنبه ۱۷ اسفند, ۱۴:۰۵"},
        {"C", HourCycle::FromLocale, "14:05", "7 Mar, 14:05", "Mon 07 Mar, 14:05"},
    };
    for (const Texts& row : table) {
        SCOPED_TRACE(row.locale);
        locale.set(row.locale);
        CurrentLocale::setHourCycle(row.hours);
        EXPECT_EQ(hhmm(monday), row.time);
        EXPECT_EQ(dMMMhhmm(monday), row.dayAndTime);
        EXPECT_EQ(compactDayNameDateAndTimeForMenuIconApp(monday), row.menuIcon);
    }
}

TEST_F(DateTexts, ShowMidnightAndNoonInBothClocks) {
    CurrentLocale::setHourCycle(HourCycle::TwentyFourHour);
    EXPECT_EQ(hhmm(at(2016, 3, 7, 0, 0)), "00:00");
    EXPECT_EQ(hhmm(at(2016, 3, 7, 12, 0)), "12:00");
    locale.set("en_US.UTF-8");
    CurrentLocale::setHourCycle(HourCycle::TwelveHour);
    EXPECT_EQ(hhmm(at(2016, 3, 7, 0, 0)), "12:00 AM");
    EXPECT_EQ(hhmm(at(2016, 3, 7, 12, 0)), "12:00 PM");
    EXPECT_EQ(hhmm(at(2016, 3, 7, 9, 0)), "9:00 AM");
}

TEST_F(DateTexts, AppendTheMarkerOnlyToTheShortClock) {
    CurrentLocale::setHourCycle(HourCycle::TwelveHour);
    EXPECT_EQ(appendingAMPMIfNeeded("h:mm"), "h:mm a");
    CurrentLocale::setHourCycle(HourCycle::TwentyFourHour);
    EXPECT_EQ(appendingAMPMIfNeeded("HH:mm"), "HH:mm");
}

TEST_F(DateTexts, KeepTheLongDayInUSEnglishWithTheYearOfTheWeek) {
    locale.set("fa_IR.UTF-8");
    EXPECT_EQ(compactDayNameAndDateString(monday), "Monday  7 March, 2016");
    EXPECT_EQ(compactDayNameAndDateString(at(2017, 12, 31, 12, 0)), "Sunday  31 December, 2018");
    EXPECT_EQ(compactDayNameAndDateString(at(2017, 12, 30, 12, 0)), "Saturday  30 December, 2017");
}

TEST_F(DateTexts, FollowTheTimeZoneWithoutARestart) {
    EXPECT_EQ(dMMMhhmm(at(2016, 3, 7, 0, 30)), "7 Mar, 00:30");
    zone.set("America/New_York");
    EXPECT_EQ(dMMMhhmm(at(2016, 3, 7, 0, 30)), "6 Mar, 18:30");
    zone.set("Asia/Kolkata");
    EXPECT_EQ(dMMMhhmm(at(2016, 3, 7, 0, 30)), "7 Mar, 05:00");
}

TEST_F(DateTexts, FollowSummerTime) {
    const Date before = at(2026, 3, 29, 1, 59);
    EXPECT_EQ(hhmm(before), "01:59");
    EXPECT_EQ(hhmm(before + 1min), "03:00");
}

TEST_F(DateTexts, AreMadeInEveryLocale) {
    int32_t count = 0;
    const icu::Locale* available = icu::Locale::getAvailableLocales(count);
    ASSERT_GT(count, 100);
    for (int32_t i = 0; i < count; ++i) {
        const std::string country = available[i].getCountry();
        locale.set(available[i].getLanguage() + (country.empty() ? "" : "_" + country) + ".UTF-8");
        EXPECT_FALSE(compactDayNameDateAndTimeForMenuIconApp(monday).empty()) << available[i].getName();
    }
}

TEST_F(DateTexts, CallTheSameDayTodayAndTheNextTomorrow) {
    const Date now = at(2026, 3, 7, 9, 0);
    EXPECT_EQ(relativeDate(at(2026, 3, 7, 14, 5), now), "Today at 14:05");
    EXPECT_EQ(relativeDate(at(2026, 3, 7, 8, 0), now), "Today at 08:00");
    EXPECT_EQ(relativeDate(at(2026, 3, 8, 0, 0), now), "Tomorrow at 00:00");
    EXPECT_EQ(relativeDate(at(2026, 3, 9, 14, 5), now), "Mon 09 Mar, 14:05");
    EXPECT_EQ(relativeDate(at(2026, 3, 6, 14, 5), now), "Fri 06 Mar, 14:05");
}

TEST_F(DateTexts, CompareOnlyTheDayOfTheMonth) {
    EXPECT_EQ(relativeDate(at(2027, 1, 7, 14, 5), at(2026, 3, 7, 9, 0)), "Today at 14:05");
    EXPECT_EQ(relativeDate(at(2027, 1, 8, 14, 5), at(2026, 3, 7, 9, 0)), "Tomorrow at 14:05");
    EXPECT_EQ(relativeDate(at(2026, 2, 1, 14, 5), at(2026, 1, 31, 9, 0)), "Sun 01 Feb, 14:05");
}

TEST_F(DateTexts, CompareDaysInTheLocalTimeZone) {
    const Date evening = at(2026, 3, 7, 23, 30);
    EXPECT_EQ(relativeDate(at(2026, 3, 8, 0, 30), evening), "Tomorrow at 00:30");
    zone.set("America/New_York");
    EXPECT_EQ(relativeDate(at(2026, 3, 8, 0, 30), evening), "Today at 18:30");
}

TEST_F(DateTexts, CompareDaysOfTheUsersCalendar) {
    const Date now = at(2026, 3, 20, 9, 0);
    const Date meeting = at(2026, 3, 21, 14, 5);
    EXPECT_EQ(relativeDate(meeting, now), "Tomorrow at 14:05");
    locale.set("fa_IR.UTF-8");
    EXPECT_EQ(relativeDate(meeting, now), compactDayNameDateAndTimeForMenuIconApp(meeting));
}

} // namespace
} // namespace velloren
