#include "Services/Local/Text.h"

#include <gtest/gtest.h>

#include <string>

namespace velloren {
namespace {

TEST(PrintableLine, EscapesOnlyWhatWouldBreakOrDisguiseTheLine) {
    const std::string readable = "K\u00f6ln \u6771\u4eac \U0001F600 \\n \"quoted\"";
    EXPECT_EQ(printableLine(readable), readable);
    EXPECT_EQ(printableLine("a\nb\r\tc\x1b[2J\x7f"), "a\\x0ab\\x0d\\x09c\\x1b[2J\\x7f");
    EXPECT_EQ(printableLine(std::string("nul\0!", 5)), "nul\\x00!");
    EXPECT_EQ(printableLine("\u0085\u2028\u202e"), "\\xc2\\x85\\xe2\\x80\\xa8\\xe2\\x80\\xae");
    EXPECT_EQ(printableLine("cut \xE2\x82"), "cut \\xe2\\x82");
}

} // namespace
} // namespace velloren
