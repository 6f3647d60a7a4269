#include "Platform/Foundation/Utf8.h"

#include <gtest/gtest.h>

namespace velloren {
namespace {

TEST(Utf8, RepairsOnlyWhatCannotTravel) {
    for (const std::string plain : {"", "K\u00f6ln \U0001F600", "\uFDCF\uFDF0\uFFFD\U0010FFFD"}) {
        EXPECT_TRUE(isPlainText(plain)) << plain;
        EXPECT_EQ(repairedText("a" + plain), "a" + plain);
    }
    for (const std::string& odd : {std::string(1, '\0'), std::string("\xFF"), std::string("\uFDD0"),
                                   std::string("\uFDEF"), std::string("\uFFFF"), std::string("\U0010FFFE")}) {
        EXPECT_FALSE(isPlainText("a" + odd)) << odd;
        EXPECT_EQ(repairedText("a" + odd + "z"), "a\uFFFDz");
    }
    EXPECT_TRUE(isPlainText(repairedText("\xED\xA0\x80\xC0\x80\xF5")));
}

} // namespace
} // namespace velloren
