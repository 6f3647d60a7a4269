#include "Services/Local/LocalLogger.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/TemporaryDirectory.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

namespace velloren {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::MatchesRegex;

constexpr LogOrigin origin("VellorenMenu/MenuAppDelegate", "openMeeting(_:)", 42);

std::vector<std::string> linesIn(const std::filesystem::path& file) {
    std::ifstream stream(file);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

class LocalLoggerTest : public testing::Test {
  protected:
    LocalLoggerTest() { testing::internal::CaptureStderr(); }

    ~LocalLoggerTest() override { (void)testing::internal::GetCapturedStderr(); }

    static void writeLines(LocalLogger& logger, int count) {
        for (int line = 0; line < count; ++line)
            logger.info(std::to_string(line) + std::string(10'000, '.'), origin);
    }

    static std::string standardError() {
        std::string text = testing::internal::GetCapturedStderr();
        testing::internal::CaptureStderr();
        return text;
    }

    TemporaryDirectory directory;
    EnvironmentVariable state{"XDG_STATE_HOME", (directory / "new/state").string()};
    std::filesystem::path file = directory / "new/state/velloren/menu.log";
};

TEST_F(LocalLoggerTest, WritesTheSameLinesToTheFileOfTheLastRunAndToStandardError) {
    LocalLogger("menu.log").info("K\u00f6ln \U0001F600\n{} %v \xFF\x7f\u0085\u2028\u202e\xE2\x82", origin);
    LocalLogger("menu.log").info("again", origin);
    const auto lines = linesIn(file);
    ASSERT_THAT(
        lines, ElementsAre(
                   MatchesRegex(
                       "....-..-..T..:..:..\\.[0-9]{3}[+-]..:.. info VellorenMenu/MenuAppDelegate:42 "
                       "openMeeting\\(_:\\) K\u00f6ln \U0001F600\\\\x0a[{][}] %v \\\\xff\\\\x7f\\\\xc2\\\\x85"
                       "\\\\xe2\\\\x80\\\\xa8\\\\xe2\\\\x80\\\\xae\\\\xe2\\\\x82"),
                   EndsWith(" again")));
    EXPECT_EQ(standardError(), lines[0] + "\n" + lines[1] + "\n");
}

TEST_F(LocalLoggerTest, WritesEachLineAtOnceWithItsLevelAndCutsAnEndlessOne) {
    LocalLogger logger("menu.log");
    const LogOrigin here("Shared/VApp", "launch()");
    const std::string place = " Shared/VApp:" + std::to_string(__LINE__ - 1) + " launch() ";
    logger.debug(std::nullopt, here);
    EXPECT_THAT(linesIn(file).back(), EndsWith(" debug" + place + "nil"));
    logger.error("", here);
    EXPECT_THAT(linesIn(file).back(), EndsWith(" error" + place));
    logger.info(std::string(8'000'000, 'x'), here);
    EXPECT_THAT(linesIn(file).back(), EndsWith("xxx..."));
    EXPECT_LT(std::filesystem::file_size(file), 20'000U);
}

TEST_F(LocalLoggerTest, KeepsThreeFilesOfOneMebibyteInAFolderThatItsOwnerAloneReads) {
    using std::filesystem::perms;
    std::filesystem::create_directories(file.parent_path());
    std::filesystem::permissions(file.parent_path(), perms(0755));
    LocalLogger logger("menu.log");
    writeLines(logger, 499);
    EXPECT_EQ(std::filesystem::status(file.parent_path()).permissions(), perms::owner_all);
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(file.parent_path())) {
        names.insert(entry.path().filename());
        EXPECT_LE(entry.file_size(), 1024U * 1024U);
    }
    EXPECT_THAT(names, ElementsAre("menu.1.log", "menu.2.log", "menu.log"));
    EXPECT_THAT(linesIn(file).back(), MatchesRegex(".* 498[.]+"));
}

TEST_F(LocalLoggerTest, UsesStandardErrorAloneWithoutAFolder) {
    const EnvironmentVariable home("HOME", std::nullopt);
    const std::vector<std::optional<std::string>> folders{"/proc/none", "/dev/null", std::nullopt};
    for (const auto& folder : folders) {
        state.set(folder);
        LocalLogger("menu.log").info(folder, origin);
    }
    EXPECT_THAT(standardError(), MatchesRegex(".* /proc/none\n.* /dev/null\n.* nil\n"));
}

TEST_F(LocalLoggerTest, TriesAgainAMinuteAfterARotationWithoutPlaceForTheOldOrTheNewFile) {
    const std::filesystem::path folder = file.parent_path();
    const std::vector<std::function<void()>> obstacles{
        [&] { std::filesystem::create_directories(folder / "menu.1.log/in the way"); },
        [&] { std::filesystem::rename(folder, directory / "gone"), std::ofstream(folder) << "in the way"; },
    };
    std::chrono::steady_clock::time_point now;
    for (const auto& putInTheWay : obstacles) {
        LocalLogger logger("menu.log", nullptr, [&] { return now; });
        logger.info("first", origin);
        putInTheWay();
        writeLines(logger, 250);
        std::filesystem::remove_all(folder);
        logger.info("too soon", origin);
        EXPECT_FALSE(std::filesystem::exists(file));
        now += std::chrono::minutes(1);
        logger.info("last", origin);
        EXPECT_THAT(linesIn(file), ElementsAre(EndsWith(" last")));
    }
    EXPECT_THAT(standardError(), MatchesRegex(".* too soon\n.* last\n.* too soon\n.* last\n"));
}

} // namespace
} // namespace velloren
