#include "Platform/Foundation/CurrentLocale.h"
#include "Tests/Support/EnvironmentVariable.h"

#include <gtest/gtest.h>
#include <unicode/timezone.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <unistd.h>
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
         std::vector<std::string>{"", "C", "C.UTF-8", "POSIX", "/tmp/locale", "nobodys_US", "_US",
                                  std::string(100'000, 'a'), "\xFF\xFE"}) {
        language.set(name);
        EXPECT_EQ(CurrentLocale::identifier(), "en_US_POSIX@hours=h23") << name.substr(0, 40);
    }
    CurrentLocale::setHourCycle(HourCycle::TwelveHour);
    EXPECT_EQ(CurrentLocale::identifier(), "en_US_POSIX@hours=h12") << "unless the desktop has a clock";
}

TEST_F(CurrentLocaleTest, FollowsTheMachinesTimeZone) {
    EnvironmentVariable zone("TZ", std::nullopt);
    const auto show = [](const char* name) {
        std::filesystem::remove("/etc/localtime");
        std::filesystem::create_symlink(std::string("/usr/share/zoneinfo/") + name, "/etc/localtime");
        CurrentLocale::followTimeZone();
        icu::UnicodeString id;
        std::string text;
        std::unique_ptr<icu::TimeZone>(icu::TimeZone::createDefault())->getID(id).toUTF8String(text);
        std::fprintf(stderr, "%s ", text.c_str());
    };
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can have files of its own in the place of the machine's";
    EXPECT_EXIT(
        {
            if (::unshare(CLONE_NEWNS) == 0 &&
                ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                ::mount("none", "/etc", "tmpfs", 0, nullptr) == 0) {
                show("Asia/Tokyo");
                show("Europe/Berlin");
            }
            ::_exit(0);
        },
        ::testing::ExitedWithCode(0), "Asia/Tokyo Europe/Berlin ");
}

} // namespace
} // namespace velloren
