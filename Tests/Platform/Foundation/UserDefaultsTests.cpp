#include "Platform/Foundation/UserDefaults.h"
#include "Tests/Support/TemporaryDirectory.h"

#include <QSettings>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace velloren {
namespace {

class UserDefaultsTest : public testing::Test {
  protected:
    void write(const std::string& contents) const { std::ofstream(file) << contents; }

    TemporaryDirectory directory;
    const std::filesystem::path file = directory / "defaults.ini";
};

TEST_F(UserDefaultsTest, ReadsTextsAndOfThemFourAsBooleansAndMakesNoFile) {
    for (const auto& place : {file, directory.path(), std::filesystem::path()})
        EXPECT_EQ(UserDefaults(place).stringForKey("g/key"), std::nullopt) << place;
    EXPECT_FALSE(std::filesystem::exists(file));

    struct {
        const char* written;
        std::optional<bool> boolean;
    } const texts[] = {{"1", true}, {"true", true}, {"false", false}, {"0", false},
                       {"2", {}},   {"TRUE", {}},   {"a@b.org", {}},  {"", {}}};

    for (const auto& [written, boolean] : texts) {
        write("[g]\nkey=" + std::string(written) + "\n");
        EXPECT_EQ(UserDefaults(file).stringForKey("g/key"), written);
        EXPECT_EQ(UserDefaults(file).boolForKey("g/key"), boolean) << written;
    }
    write("top=1\nday=\\x65e5\nlist=a, b\nquoted=\"a\", \"b\"\npoint=@Point(1 "
          "2)\nhuge=@Variant(\\0\\0\\0\\x9\\xff\\xff\\xff\\xf0)\n");
    EXPECT_EQ(UserDefaults(file).stringForKey("top"), "1");
    EXPECT_EQ(UserDefaults(file).stringForKey("day"), "\u65e5");
    for (const char* key : {"list", "quoted", "point", "huge", "missing"})
        EXPECT_EQ(UserDefaults(file).stringForKey(key), std::nullopt) << key;
}

TEST_F(UserDefaultsTest, PrefersWhatTheUserSetToWhatIsRegisteredAndStoresNoneOfThat) {
    write("crash=false\nodd=perhaps\n");
    UserDefaults defaults(file);
    defaults.registerDefaults({{"crash", "true"}, {"odd", "true"}, {"other", "true"}});
    EXPECT_EQ(defaults.boolForKey("crash"), false);
    EXPECT_EQ(defaults.boolForKey("odd"), true);
    EXPECT_EQ(defaults.boolForKey("other"), true);
    defaults.set({{"g/key", "value"}});
    EXPECT_EQ(UserDefaults(file).boolForKey("other"), std::nullopt);
}

TEST_F(UserDefaultsTest, StoresAnyTextInFoldersThatAreMissingAndRemovesOneOfThem) {
    const auto deep = directory / "new/folder/defaults.ini";
    const std::string text = "@a, \"b\"; 100% = \\ \xC3\xBC\r\n\t[x] ";
    UserDefaults(deep).set({{"g/key", text}, {"g/other", text}, {"top", text}});
    UserDefaults(deep).set({{"g/other", std::nullopt}});
    EXPECT_EQ(UserDefaults(deep).stringForKey("g/other"), std::nullopt);
    const QSettings settings(QString::fromStdString(deep), QSettings::IniFormat);
    for (const char* key : {"g/key", "top"}) {
        EXPECT_EQ(UserDefaults(deep).stringForKey(key), text);
        EXPECT_EQ(settings.value(key).toString().toStdString(), text) << "other programs read it as well";
    }
}

TEST_F(UserDefaultsTest, KeepsWhatElseIsInTheFileByteForByte) {
    const std::string huge = "huge=@Variant(\\0\\0\\0\\x9\\xff\\xff\\xff\\xf0)\r\n";
    write("; \"made\xff by hand\n[g]\nb = 2 ; two\nkey=\"1\"\n\n[h]\n" + huge + "[g]\nkey=3");
    UserDefaults(file).set({{"g/c", "4"}, {"g/key", std::nullopt}, {"top", "5"}, {"new/d", "6 7"}});
    std::ostringstream written;
    written << std::ifstream(file).rdbuf();
    EXPECT_EQ(written.str(), "; \"made\xff by hand\ntop=5\n[g]\nb = 2 ; two\n\n[h]\n" + huge +
                                 "[g]\nc=4\n[new]\nd=\"6 7\"\n");
}

} // namespace
} // namespace velloren
