#include "Platform/Foundation/UserDefaults.h"
#include "Tests/Support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <array>
#include <fcntl.h>
#include <fstream>
#include <sys/stat.h>

namespace velloren {
namespace {

class UserDefaultsTest : public testing::Test {
  protected:
    void write(const std::string& contents) const { std::ofstream(file) << contents; }

    TemporaryDirectory directory;
    const std::filesystem::path file = directory / "defaults.ini";
};

TEST_F(UserDefaultsTest, ReadsTextsAndOfThemFourAsBooleans) {
    struct {
        const char* key;
        std::optional<std::string> text;
        std::optional<bool> boolean;
    } const entries[] = {{"top", "1", true},     {"g/yes", "true", true},   {"g/no", "false", false},
                         {"g/zero", "0", false}, {"g/two", "2", {}},        {"g/word", "yes", {}},
                         {"g/loud", "TRUE", {}}, {"g/mail", "a@b.org", {}}, {"g/empty", "", {}},
                         {"g/list", {}, {}},     {"g/point", {}, {}},       {"g/missing", {}, {}}};

    write("top=1\n[g]\nmail=a@b.org\nyes=true\nno=false\nzero=0\ntwo=2\nword=yes\nloud=TRUE\n"
          "empty=\nlist=a, b\npoint=@Point(1 2)\n");
    const UserDefaults defaults(file);
    for (const auto& [key, text, boolean] : entries) {
        EXPECT_EQ(defaults.stringForKey(key), text) << key;
        EXPECT_EQ(defaults.boolForKey(key), boolean) << key;
    }
}

TEST_F(UserDefaultsTest, ReadsAChangeThatKeepsSizeAndTime) {
    for (const std::string value : {"one", "two"}) {
        write("[g]\nkey=" + value + "\n");
        const timespec moment{1'000'000, 0};
        ASSERT_EQ(::utimensat(AT_FDCWD, file.c_str(), std::array{moment, moment}.data(), 0), 0);
        EXPECT_EQ(UserDefaults(file).stringForKey("g/key"), value);
    }
}

TEST_F(UserDefaultsTest, PrefersWhatTheUserSetToWhatIsRegisteredAndStoresNoneOfThat) {
    write("crash=false\nodd=perhaps\n");
    UserDefaults defaults(file);
    defaults.registerDefaults({{"crash", "true"}, {"odd", "true"}, {"other", "true"}});
    EXPECT_EQ(defaults.boolForKey("crash"), false);
    EXPECT_EQ(defaults.boolForKey("odd"), true);
    EXPECT_EQ(defaults.boolForKey("other"), true);
    defaults.setString("g/key", "value");
    EXPECT_EQ(UserDefaults(file).boolForKey("other"), std::nullopt);
}

TEST_F(UserDefaultsTest, StoresAnyTextInFoldersThatAreMissingAndRemovesOneOfThem) {
    const auto deep = directory / "new/folder/defaults.ini";
    const std::string text = "@a, \"b\"; 100% = \\ \xC3\xBC\n\t[x]";
    UserDefaults defaults(deep);
    defaults.setString("g/key", text);
    defaults.setString("g/other", text);
    EXPECT_EQ(UserDefaults(deep).stringForKey("g/other"), text);
    defaults.removeValue("g/other");
    EXPECT_EQ(defaults.stringForKey("g/other"), std::nullopt);
    EXPECT_EQ(UserDefaults(deep).stringForKey("g/other"), std::nullopt);
    EXPECT_EQ(UserDefaults(deep).stringForKey("g/key"), text);
}

TEST_F(UserDefaultsTest, ReadsNothingButAFileOfBearableSizeAndLeavesAFifoAlone) {
    const auto valueIn = [](const std::filesystem::path& place) {
        return UserDefaults(place).stringForKey("g/key");
    };
    EXPECT_EQ(valueIn(file), std::nullopt);
    EXPECT_FALSE(std::filesystem::exists(file));
    EXPECT_EQ(valueIn(directory.path()), std::nullopt);
    EXPECT_EQ(valueIn(std::filesystem::path()), std::nullopt);
    write("[g]\nkey=value\npadding=" + std::string(std::size_t{1024} * 1024, 'x') + "\n");
    EXPECT_EQ(valueIn(file), std::nullopt);
    const auto fifo = directory / "fifo";
    ASSERT_EQ(::mkfifo(fifo.c_str(), S_IRWXU), 0);
    EXPECT_EQ(valueIn(fifo), std::nullopt);
    UserDefaults(fifo).setString("g/key", "value");
    EXPECT_TRUE(std::filesystem::is_fifo(fifo));
}

} // namespace
} // namespace velloren
