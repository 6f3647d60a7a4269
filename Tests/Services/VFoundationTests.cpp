#include "Platform/Foundation/SharedInstance.h"
#include "Services/VFoundation.h"
#include "Tests/Support/ManualRunLoop.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>

namespace velloren {
namespace {

using namespace std::chrono_literals;

std::optional<Date> parsed(std::string_view text) {
    return meetingDateFormatter().dateFromString(text);
}

Date utc(std::chrono::year_month_day day, std::chrono::seconds timeOfDay) {
    return Date(std::chrono::sys_days(day) + timeOfDay);
}

TEST(MeetingDates, AreReadWithTheirOffset) {
    using namespace std::chrono;
    const auto expected = utc(2026y / March / 7, 13h + 5min);
    EXPECT_EQ(parsed("2026-03-07T14:05:00+01:00"), expected);
    EXPECT_EQ(parsed("2026-03-07T13:05:00Z"), expected);
    EXPECT_EQ(parsed("2026-03-07T09:35:00-03:30"), expected);
    EXPECT_EQ(parsed("2026-03-08T03:05:00+14:00"), expected);
    EXPECT_EQ(parsed("2024-02-29T23:59:59+00:00"), utc(2024y / February / 29, 23h + 59min + 59s));
    EXPECT_EQ(parsed("1969-12-31T23:59:59Z"), utc(1969y / December / 31, 23h + 59min + 59s));
}

TEST(MeetingDates, AreRefusedInAnyOtherForm) {
    for (const char* text : {"",
                             "Z",
                             "2026-03-07",
                             "2026-03-07T14:05:00",
                             "2026-03-07T14:05+01:00",
                             "2026-03-07T14:05:00+0100",
                             "2026-03-07T14:05:00+01",
                             "2026-03-07T14:05:00 +01:00",
                             " 2026-03-07T14:05:00+01:00",
                             "2026-03-07T14:05:00+01:00 ",
                             "2026-03-07T14:05:00+01:00\n",
                             "2026-03-07T14:05:00ZZ",
                             "2026-03-07 14:05:00+01:00",
                             "2026-03-07t14:05:00+01:00",
                             "2026-03-07T14:05:00z",
                             "2026-03-07T14:05:00.000+01:00",
                             "26-03-07T14:05:00+01:00",
                             "2026-3-7T14:05:00+01:00",
                             "+026-03-07T14:05:00+01:00",
                             "2026-03-07T14:05:-1+01:00",
                             "2026-03-07T14:05:00*01:00",
                             "２０２６-03-07T14:05:00Z",
                             "garbage"})
        EXPECT_EQ(parsed(text), std::nullopt) << text;
}

TEST(MeetingDates, AreRefusedWhereTheCalendarHasNoSuchTime) {
    for (const char* text :
         {"2026-02-30T14:05:00Z", "2026-02-29T14:05:00Z", "2026-13-01T14:05:00Z", "2026-00-01T14:05:00Z",
          "2026-03-00T14:05:00Z", "2026-03-32T14:05:00Z", "2026-03-07T24:00:00Z", "2026-03-07T14:60:00Z",
          "2026-03-07T14:05:60Z", "2026-03-07T14:05:00+24:00", "2026-03-07T14:05:00+01:60"})
        EXPECT_EQ(parsed(text), std::nullopt) << text;
}

TEST(MeetingDates, AreRefusedWhenTooLongOrCutByANul) {
    EXPECT_EQ(parsed("2026-03-07T14:05:00Z" + std::string(10'000, ' ')), std::nullopt);
    EXPECT_EQ(parsed(std::string(10'000, '2')), std::nullopt);
    EXPECT_EQ(parsed(std::string("2026-03-07T14:05:00Z\0", 21)), std::nullopt);
}

TEST(Delay, RunsTheClosureOnceOnTheMainRunLoop) {
    SharedInstance<RunLoop>::provide([] { return std::make_unique<ManualRunLoop>(); });
    auto& runLoop = dynamic_cast<ManualRunLoop&>(RunLoop::main());
    int runs = 0;
    delay(0.5, [&runs] { ++runs; });
    runLoop.advance(0.49s);
    EXPECT_EQ(runs, 0);
    runLoop.advance(0.01s);
    EXPECT_EQ(runs, 1);
    runLoop.advance(10s);
    EXPECT_EQ(runs, 1);
    SharedInstance<RunLoop>::reset();
}

} // namespace
} // namespace velloren
