#include "Services/VFoundation.h"

#include <gtest/gtest.h>

#include <string>

namespace velloren {
namespace {

std::optional<Date> parsed(std::string_view text) {
    return meetingDateFormatter().dateFromString(text);
}

TEST(MeetingDates, AreReadWithTheirOffset) {
    using namespace std::chrono;
    using namespace std::chrono_literals;
    const sys_days day = 2026y / March / 7;
    for (const auto& [text, expected] : {std::pair("2026-03-07T14:05:00+01:00", day + 13h + 5min + 0s),
                                         std::pair("2026-03-07T13:05:00Z", day + 13h + 5min + 0s),
                                         std::pair("2026-03-07T09:35:00-03:30", day + 13h + 5min + 0s),
                                         std::pair("2026-03-07T23:59:59+23:59", day + 59s),
                                         std::pair("2024-02-29T00:00:00Z", sys_days(2024y / 2 / 29) + 0s),
                                         std::pair("1969-12-31T23:59:59Z", sys_seconds(-1s))})
        EXPECT_EQ(parsed(text), expected) << text;
}

TEST(MeetingDates, AreRefusedInAnyOtherFormAndWhereTheCalendarHasNoSuchTime) {
    for (const std::string text :
         {"", "2026-03-07", "2026-03-07T14:05:00", "2026-03-07T14:05:00+0100", "2026-03-07T14:05:00 +01:00",
          " 2026-03-07T14:05:00Z", "2026-03-07T14:05:00Z\n", "2026-03-07 14:05:00Z", "2026-03-07T14:05:00z",
          "2026/03-07T14:05:00Z", "2026-03/07T14:05:00Z", "2026-03-07T14.05:00Z", "2026-03-07T14:05.00Z",
          "2026-03-07T14:05:00.000Z", "2026-3-7T14:05:00Z", "+026-03-07T14:05:00Z",
          "2026-03-07T14:05:00*01:00"})
        EXPECT_EQ(parsed(text), std::nullopt) << text;
    EXPECT_EQ(parsed({"2026-03-07T14:05:00Z\0", 21}), std::nullopt);
    for (const char* text : {"2026-02-29T14:05:00Z", "2026-13-01T14:05:00Z", "2026-03-00T14:05:00Z",
                             "2026-03-07T24:00:00Z", "2026-03-07T14:60:00Z", "2026-03-07T14:05:60Z",
                             "2026-03-07T14:05:00+24:00", "2026-03-07T14:05:00+01:60"})
        EXPECT_EQ(parsed(text), std::nullopt) << text;
}

} // namespace
} // namespace velloren
