#include "Platform/Foundation/CurrentLocale.h"
#include "Tests/Support/EnvironmentVariable.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace velloren {
namespace {

class CurrentLocaleTest : public testing::Test {
  protected:
    ~CurrentLocaleTest() override { CurrentLocale::setHourCycle(HourCycle::FromLocale); }

    EnvironmentVariable all{"LC_ALL", std::nullopt};
    EnvironmentVariable time{"LC_TIME", std::nullopt};
    EnvironmentVariable language{"LANG", std::nullopt};
};

TEST_F(CurrentLocaleTest, ComesFromTheFirstVariableThatIsSet) {
    language.set("de_DE.UTF-8");
    EXPECT_EQ(CurrentLocale::identifier(), "de_DE");
    time.set("en_GB.UTF-8");
    EXPECT_EQ(CurrentLocale::identifier(), "en_GB");
    all.set("ja_JP.UTF-8");
    EXPECT_EQ(CurrentLocale::identifier(), "ja_JP");
    all.set("");
    EXPECT_EQ(CurrentLocale::identifier(), "en_GB");
}

TEST_F(CurrentLocaleTest, UnderstandsTheNamesOfTheCLibraryAndTakesOthersForTheLongClock) {
    const std::pair<const char*, const char*> names[] = {{"fr", "fr"},
                                                         {"es_419.utf8", "es_419"},
                                                         {"ckb_IQ.UTF-8", "ckb_IQ"},
                                                         {"en_US@hours=h12;x=\x01", "en_US"},
                                                         {"de_AT.ISO-8859-15@euro", "de_AT"},
                                                         {"sr_RS.UTF-8@latin", "sr_Latn_RS"},
                                                         {"sr_RS@cyrillic", "sr_Cyrl_RS"}};
    for (const auto& [name, identifier] : names) {
        language.set(name);
        EXPECT_EQ(CurrentLocale::identifier(), identifier) << name;
    }
    for (const std::string& name :
         std::vector<std::string>{"", "C", "C.UTF-8", "POSIX", "/tmp/locale", "en_US_x", "EN_us", "_US",
                                  std::string(100'000, 'a'), "\xFF\xFE"}) {
        language.set(name);
        EXPECT_EQ(CurrentLocale::identifier(), "en_US_POSIX@hours=h23") << name.substr(0, 40);
    }
    CurrentLocale::setHourCycle(HourCycle::TwelveHour);
    EXPECT_EQ(CurrentLocale::identifier(), "en_US_POSIX@hours=h12") << "unless the desktop has a clock";
}

} // namespace
} // namespace velloren
