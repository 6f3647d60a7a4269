#include "Services/Local/Text.h"

#include <gtest/gtest.h>

#include <string>

namespace velloren {
namespace {

TEST(PrintableLine, EscapesOnlyWhatWouldBreakOrDisguiseTheLine) {
    const std::string readable = "K\u00f6ln \u6771\u4eac \U0001F600 \\n \"quoted\"";
    EXPECT_EQ(printableLine(readable), readable);
    EXPECT_EQ(printableLine("a\nb\r\tc\x1b[2J\x7f"), "a\\nb\\r\\tc\\x1b[2J\\x7f");
    EXPECT_EQ(printableLine(std::string("nul\0!", 5)), "nul\\x00!");
    EXPECT_EQ(printableLine("\u0085\u2028\u2029\u202e"), "\\u0085\\u2028\\u2029\\u202e");
    EXPECT_EQ(printableLine("cut \xE2\x82"), "cut \\xe2\\x82");
}

TEST(RepairedText, ReplacesOnlyWhatIsNotText) {
    EXPECT_EQ(repairedText("K\u00f6ln"), "K\u00f6ln");
    EXPECT_EQ(repairedText("a\xFFz"), "a\uFFFDz");
    EXPECT_EQ(repairedText(std::string("a\0z", 3)), "a\uFFFDz");
    EXPECT_FALSE(isPlainText(std::string("a\0z", 3)));
    EXPECT_TRUE(isPlainText(repairedText("\xED\xA0\x80\xC0\x80\xF5")));
}

} // namespace
} // namespace velloren
