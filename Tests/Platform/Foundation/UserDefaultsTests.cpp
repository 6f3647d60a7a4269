#include "Platform/Foundation/SharedInstance.h"
#include "Platform/Foundation/UserDefaults.h"
#include "Tests/Support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <array>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <string_view>
#include <sys/stat.h>

namespace velloren {
namespace {

class UserDefaultsTest : public testing::Test {
  protected:
    void write(std::string_view contents) const {
        std::ofstream(file, std::ios::binary | std::ios::trunc) << contents;
    }

    // Always the same moment, so that a change cannot be told by the file's time.
    void writeAtOneMoment(std::string_view contents) const {
        write(contents);
        const timespec moment{1'000'000, 0};
        ASSERT_EQ(::utimensat(AT_FDCWD, file.c_str(), std::array{moment, moment}.data(), 0), 0);
    }

    TemporaryDirectory directory;
    std::filesystem::path file = directory / "defaults.ini";
};

TEST_F(UserDefaultsTest, ReadsTheTextsOfGroups) {
    write("top=1\n[currentUser]\nid=42\nemail=ada@example.org\n");
    const UserDefaults defaults(file);
    EXPECT_EQ(defaults.stringForKey("top"), "1");
    EXPECT_EQ(defaults.stringForKey("currentUser/id"), "42");
    EXPECT_EQ(defaults.stringForKey("currentUser/email"), "ada@example.org");
    EXPECT_EQ(defaults.stringForKey("currentUser/name"), std::nullopt);
}

TEST_F(UserDefaultsTest, TakesOnlyTheFourBooleanWords) {
    write("[g]\na=true\nb=1\nc=false\nd=0\ne=yes\nf=TRUE\ng=\nh=2\n");
    const UserDefaults defaults(file);
    EXPECT_EQ(defaults.boolForKey("g/a"), true);
    EXPECT_EQ(defaults.boolForKey("g/b"), true);
    EXPECT_EQ(defaults.boolForKey("g/c"), false);
    EXPECT_EQ(defaults.boolForKey("g/d"), false);
    for (const char* key : {"g/e", "g/f", "g/g", "g/h", "g/missing"})
        EXPECT_EQ(defaults.boolForKey(key), std::nullopt) << key;
}

TEST_F(UserDefaultsTest, ReadsAChangeThatKeepsSizeAndTime) {
    writeAtOneMoment("[g]\nkey=one\n");
    EXPECT_EQ(UserDefaults(file).stringForKey("g/key"), "one");
    writeAtOneMoment("[g]\nkey=two\n");
    EXPECT_EQ(UserDefaults(file).stringForKey("g/key"), "two");
}

TEST_F(UserDefaultsTest, PrefersWhatTheUserSetToWhatIsRegistered) {
    write("crash=false\nodd=perhaps\n");
    UserDefaults defaults(file);
    defaults.registerDefaults({{"crash", "true"}, {"odd", "true"}, {"other", "true"}});
    EXPECT_EQ(defaults.boolForKey("crash"), false);
    EXPECT_EQ(defaults.boolForKey("odd"), true);
    EXPECT_EQ(defaults.boolForKey("other"), true);
}

TEST_F(UserDefaultsTest, KeepsRegisteredValuesOutOfTheFile) {
    UserDefaults defaults(file);
    defaults.registerDefaults({{"crash", "true"}});
    defaults.setString("g/key", "value");
    EXPECT_EQ(UserDefaults(file).boolForKey("crash"), std::nullopt);
}

TEST_F(UserDefaultsTest, StoresAnyTextInFoldersThatAreMissing) {
    const auto deep = directory / "new/folder/defaults.ini";
    const std::string text = "@a, \"b\"; 100% = \\ \xC3\xBC\n\t[x]";
    UserDefaults(deep).setString("g/key", text);
    EXPECT_EQ(UserDefaults(deep).stringForKey("g/key"), text);
}

TEST_F(UserDefaultsTest, RemovesOneValueAndKeepsTheOthers) {
    write("[g]\na=1\nb=2\n");
    UserDefaults defaults(file);
    defaults.removeValue("g/a");
    EXPECT_EQ(defaults.stringForKey("g/a"), std::nullopt);
    EXPECT_EQ(UserDefaults(file).stringForKey("g/a"), std::nullopt);
    EXPECT_EQ(UserDefaults(file).stringForKey("g/b"), "2");
}

TEST_F(UserDefaultsTest, ReadsNothingWhereNoFileIs) {
    EXPECT_EQ(UserDefaults(file).stringForKey("g/key"), std::nullopt);
    EXPECT_EQ(UserDefaults(directory.path()).stringForKey("g/key"), std::nullopt);
    EXPECT_EQ(UserDefaults(std::filesystem::path()).stringForKey("g/key"), std::nullopt);
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(UserDefaultsTest, NeitherReadsNorWritesAFifo) {
    ASSERT_EQ(::mkfifo(file.c_str(), S_IRWXU), 0);
    UserDefaults defaults(file);
    EXPECT_EQ(defaults.stringForKey("g/key"), std::nullopt);
    defaults.setString("g/key", "value");
    EXPECT_EQ(defaults.stringForKey("g/key"), "value");
    EXPECT_TRUE(std::filesystem::is_fifo(file));
}

TEST_F(UserDefaultsTest, IgnoresAFileThatIsTooLarge) {
    write("[g]\nkey=value\npadding=" + std::string(std::size_t{1024} * 1024, 'x') + "\n");
    EXPECT_EQ(UserDefaults(file).stringForKey("g/key"), std::nullopt);
}

TEST_F(UserDefaultsTest, SurvivesGarbage) {
    std::minstd_rand random(7);
    for (int round = 0; round < 200; ++round) {
        std::string garbage = "[g]\nkey=@Variant(\n[";
        for (int i = 0; i < 400; ++i)
            garbage += static_cast<char>(random() & 0xFF);
        write(garbage);
        EXPECT_EQ(UserDefaults(file).stringForKey("none/such"), std::nullopt);
    }
}

TEST_F(UserDefaultsTest, IsSharedAsTheStandardDefaults) {
    SharedInstance<UserDefaults>::provide([this] { return std::make_unique<UserDefaults>(file); });
    UserDefaults::standardUserDefaults().registerDefaults({{"crash", "true"}});
    EXPECT_EQ(UserDefaults::standardUserDefaults().boolForKey("crash"), true);
    SharedInstance<UserDefaults>::reset();
}

} // namespace
} // namespace velloren
