#include "Platform/Foundation/CurrentLocale.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "VellorenMenu/DateTexts.h"

#include <gtest/gtest.h>

#include <chrono>
#include <tuple>

namespace velloren {
namespace {

using namespace std::chrono;

class DateTexts : public testing::Test {
  protected:
    ~DateTexts() override { CurrentLocale::setHourCycle(HourCycle::FromLocale); }

    // Berlin's wall clock in winter.
    static Date at(year_month_day day, hours hour, minutes minute = 0min) {
        return Date(sys_days(day) + hour - 1h + minute);
    }

    EnvironmentVariable locale{"LC_ALL", "en_GB.UTF-8"};
    EnvironmentVariable zone{"TZ", "Europe/Berlin"};
};

TEST_F(DateTexts, FollowLocaleAndClock) {
    using enum HourCycle;
    using Texts = std::tuple<const char*, HourCycle, const char*, const char*, const char*>;
    for (const auto& [name, clock, time, dayAndTime, menuIcon] : {
             Texts{"en_US", FromLocale, "2:05 PM", "7 Mar, 2:05 PM", "Mon 07 Mar, 2:05 PM"},
             Texts{"en_US", TwentyFourHour, "14:05", "7 Mar, 14:05", "Mon 07 Mar, 14:05"},
             Texts{"de_DE", FromLocale, "14:05", "7 März, 14:05", "Mo. 07 März, 14:05"},
             Texts{"de_DE", TwelveHour, "2:05 PM", "7 März, 2:05 PM", "Mo. 07 März, 2:05 PM"},
             Texts{"ja_JP", TwelveHour, "2:05 午後", "7 3月, 2:05 午後", "月 07 3月, 2:05 午後"},
             Texts{"ar_EG", FromLocale, "٢:٠٥ م", "٧ مارس, ٢:٠٥ م", "الاثنين ٠٧ مارس, ٢:٠٥ م"},
             Texts{"fa_IR", FromLocale, "۱۴:۰۵", "۱۷ اسفند, ۱۴:۰۵", "دوشنبه ۱۷ اسفند, ۱۴:۰۵"},
             Texts{"C", FromLocale, "14:05", "7 Mar, 14:05", "Mon 07 Mar, 14:05"},
         }) {
        SCOPED_TRACE(name);
        locale.set(name);
        CurrentLocale::setHourCycle(clock);
        const Date monday = at(2016y / March / 7, 14h, 5min);
        EXPECT_EQ(hhmm(monday), time);
        EXPECT_EQ(dMMMhhmm(monday), dayAndTime);
        EXPECT_EQ(compactDayNameDateAndTimeForMenuIconApp(monday), menuIcon);
    }
    locale.set("en_US.UTF-8");
    EXPECT_EQ(hhmm(at(2016y / March / 7, 0h)), "12:00 AM");
    EXPECT_EQ(hhmm(at(2016y / March / 7, 12h)), "12:00 PM");
}

TEST_F(DateTexts, KeepTheLongDayInUSEnglishWithTheYearOfTheWeek) {
    locale.set("fa_IR.UTF-8");
    EXPECT_EQ(compactDayNameAndDateString(at(2016y / March / 7, 12h)), "Monday  7 March, 2016");
    EXPECT_EQ(compactDayNameAndDateString(at(2017y / December / 31, 12h)), "Sunday  31 December, 2018");
}

TEST_F(DateTexts, CompareOnlyTheDayOfTheMonth) {
    using Row = std::tuple<Date, Date, const char*>;
    const Date now = at(2026y / March / 7, 9h);
    for (const auto& [meeting, when, text] : {
             Row{at(2026y / March / 7, 8h), now, "Today at 08:00"},
             Row{at(2026y / March / 8, 0h), now, "Tomorrow at 00:00"},
             Row{at(2026y / March / 9, 14h, 5min), now, "Mon 09 Mar, 14:05"},
             Row{at(2027y / January / 7, 14h, 5min), now, "Today at 14:05"},
             Row{at(2027y / January / 8, 14h, 5min), now, "Tomorrow at 14:05"},
             Row{at(2026y / February / 1, 14h, 5min), at(2026y / January / 31, 9h), "Sun 01 Feb, 14:05"},
         })
        EXPECT_EQ(relativeDate(meeting, when), text);
}

TEST_F(DateTexts, ChangeAtMidnights) {
    const Date meeting = at(2026y / March / 31, 9h); // in summer time
    for (const auto& [now, midnight] :
         {std::pair(at(2026y / March / 5, 14h), 30), std::pair(at(2026y / March / 29, 22h, 59min), 30),
          std::pair(at(2026y / March / 30, 12h), 31), std::pair(at(2026y / March / 31, 0h), 32)}) {
        const Date change = nextChangeOfRelativeDate(meeting, now);
        EXPECT_EQ(change, Date(sys_days(2026y / March / 1) + days(midnight - 1) - 2h)) << midnight;
        EXPECT_NE(relativeDate(meeting, change), relativeDate(meeting, change - 1s)) << midnight;
    }
}

TEST_F(DateTexts, FollowTheTimeZoneAndTheUsersCalendarWithoutARestart) {
    const Date evening = at(2026y / March / 20, 23h, 30min);
    EXPECT_EQ(relativeDate(evening + 1h, evening), "Tomorrow at 00:30");
    zone.set("America/New_York");
    EXPECT_EQ(relativeDate(evening + 1h, evening), "Today at 19:30");
    locale.set("fa_IR.UTF-8");
    EXPECT_EQ(relativeDate(evening + 12h, evening), compactDayNameDateAndTimeForMenuIconApp(evening + 12h))
        << "the next day is the first of another month";
}

} // namespace
} // namespace velloren
