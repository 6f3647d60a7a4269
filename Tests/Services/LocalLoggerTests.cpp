#include "Services/Local/LocalLogger.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/TemporaryDirectory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace velloren {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
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

    ~LocalLoggerTest() override {
        if (capturing)
            (void)testing::internal::GetCapturedStderr();
    }

    std::string standardError() {
        capturing = false;
        return testing::internal::GetCapturedStderr();
    }

    TemporaryDirectory directory;
    EnvironmentVariable state{"XDG_STATE_HOME", (directory / "new/state").string()};
    std::filesystem::path file = directory / "new/state/velloren/menu.log";
    bool capturing = true;
};

TEST_F(LocalLoggerTest, WritesTheSameLineToTheFileAndToStandardError) {
    LocalLogger("menu.log").info("opened", origin);
    const auto lines = linesIn(file);
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_THAT(
        lines[0],
        MatchesRegex("[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3}[+-][0-9]{2}:[0-9]{2} "
                     "info VellorenMenu/MenuAppDelegate:42 openMeeting\\(_:\\) opened"));
    EXPECT_EQ(standardError(), lines[0] + "\n");
}

TEST_F(LocalLoggerTest, NamesTheLevelsAndWritesEachLineAtOnce) {
    LocalLogger logger("menu.log");
    logger.debug("one", origin);
    EXPECT_THAT(linesIn(file).back(), HasSubstr(" debug VellorenMenu/MenuAppDelegate:42 "));
    logger.error(std::nullopt, origin);
    EXPECT_THAT(linesIn(file).back(), MatchesRegex(".* error .* nil"));
}

TEST_F(LocalLoggerTest, KeepsForeignTextOnOneLine) {
    LocalLogger logger("menu.log");
    logger.info("id\n2026-01-01 forged {} %v \x1b[2J\xFF", origin);
    const auto lines = linesIn(file);
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_THAT(lines[0], EndsWith(" id\\n2026-01-01 forged {} %v \\x1b[2J\\xff"));
}

TEST_F(LocalLoggerTest, CutsAnEndlessMessage) {
    std::string endless;
    endless.resize(10'000'000, 'x');
    LocalLogger("menu.log").info(endless, origin);
    EXPECT_LT(std::filesystem::file_size(file), 20'000U);
    EXPECT_THAT(linesIn(file).at(0), EndsWith("xxx..."));
}

TEST_F(LocalLoggerTest, KeepsLinesOfSeveralThreadsWhole) {
    constexpr int threadCount = 4;
    constexpr int linesEach = 500;
    LocalLogger logger("menu.log");
    std::vector<std::thread> threads;
    threads.reserve(threadCount);
    for (int thread = 0; thread < threadCount; ++thread)
        threads.emplace_back([&logger, thread] {
            for (int line = 0; line < linesEach; ++line)
                logger.info("<" + std::to_string(thread) + ":" + std::to_string(line) + ">", origin);
        });
    for (std::thread& thread : threads)
        thread.join();

    const auto lines = linesIn(file);
    EXPECT_EQ(lines.size(), static_cast<std::size_t>(threadCount * linesEach));
    std::set<std::string> messages;
    for (const std::string& line : lines) {
        ASSERT_THAT(line, MatchesRegex(".{29} info VellorenMenu/MenuAppDelegate:42 openMeeting\\(_:\\) "
                                       "<[0-9]+:[0-9]+>"));
        messages.insert(line.substr(line.rfind(' ')));
    }
    EXPECT_EQ(messages.size(), lines.size());
    const std::string onStandardError = standardError();
    EXPECT_EQ(std::count(onStandardError.begin(), onStandardError.end(), '\n'), threadCount * linesEach);
}

TEST_F(LocalLoggerTest, KeepsThreeFilesOfOneMebibyte) {
    LocalLogger logger("menu.log");
    for (int line = 0; line < 500; ++line)
        logger.info(std::to_string(line) + std::string(10'000, '.'), origin);

    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(file.parent_path())) {
        names.insert(entry.path().filename());
        EXPECT_LE(entry.file_size(), 1024U * 1024U);
    }
    EXPECT_THAT(names, testing::ElementsAre("menu.1.log", "menu.2.log", "menu.log"));
    EXPECT_THAT(linesIn(file).back(), HasSubstr(" 499..."));
}

TEST_F(LocalLoggerTest, AppendsToTheFileOfTheLastRun) {
    LocalLogger("menu.log").info("first", origin);
    LocalLogger("menu.log").info("second", origin);
    EXPECT_EQ(linesIn(file).size(), 2U);
}

TEST_F(LocalLoggerTest, IsReadableByItsOwnerAlone) {
    LocalLogger("menu.log").info("line", origin);
    using std::filesystem::perms;
    EXPECT_EQ(std::filesystem::status(file.parent_path()).permissions(), perms::owner_all);
    EXPECT_EQ(std::filesystem::status(file).permissions(), perms::owner_read | perms::owner_write);
}

TEST_F(LocalLoggerTest, UsesStandardErrorAloneWithoutAFolder) {
    std::ofstream(directory / "file") << "";
    for (const std::optional<std::string>& folder :
         {std::optional((directory / "file").string()), std::optional(std::string("/proc/none"))}) {
        state.set(folder);
        LocalLogger("menu.log").info("line " + *folder, origin);
    }
    state.set(std::nullopt);
    const EnvironmentVariable home("HOME", std::nullopt);
    LocalLogger("menu.log").info("homeless", origin);
    const std::string lines = standardError();
    EXPECT_THAT(lines, HasSubstr("line " + (directory / "file").string() + "\n"));
    EXPECT_THAT(lines, HasSubstr("line /proc/none\n"));
    EXPECT_THAT(lines, HasSubstr("homeless\n"));
}

TEST_F(LocalLoggerTest, KeepsAwayFromAFifoInTheFilesPlace) {
    std::filesystem::create_directories(file.parent_path());
    ASSERT_EQ(::mkfifo(file.c_str(), S_IRWXU), 0);
    LocalLogger("menu.log").info("nobody reads", origin);

    const int reader = ::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(reader, 0);
    LocalLogger("menu.log").info("somebody reads", origin);
    char byte = 0;
    EXPECT_EQ(::read(reader, &byte, 1), 0);
    ::close(reader);
    EXPECT_THAT(standardError(), EndsWith(" somebody reads\n"));
}

TEST_F(LocalLoggerTest, OutlivesARotationWithoutPlaceForTheOldFile) {
    std::filesystem::create_directories(file.parent_path() / "menu.1.log/in the way");
    LocalLogger logger("menu.log");
    for (int line = 0; line < 250; ++line)
        logger.info(std::to_string(line) + std::string(10'000, '.'), origin);
    logger.info("last", origin);
    EXPECT_THAT(standardError(), EndsWith(" last\n"));
}

TEST_F(LocalLoggerTest, OutlivesARotationWithoutPlaceForTheNewFile) {
    LocalLogger logger("menu.log");
    logger.info("first", origin);
    std::filesystem::remove_all(file.parent_path());
    std::ofstream(file.parent_path()) << "in the way";
    for (int line = 0; line < 150; ++line)
        logger.info(std::to_string(line) + std::string(10'000, '.'), origin);
    logger.info("last", origin);
    EXPECT_THAT(standardError(), EndsWith(" last\n"));
}

TEST_F(LocalLoggerTest, OutlivesAFullDisk) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file) << std::string(500'000, '.');
    const auto formerHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit former{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &former), 0);
    const rlimit limit{500'000, former.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    LocalLogger logger("menu.log");
    logger.info("one", origin);
    logger.info("two", origin);
    ::setrlimit(RLIMIT_FSIZE, &former);
    std::signal(SIGXFSZ, formerHandler);
    EXPECT_EQ(std::filesystem::file_size(file), 500'000U);
    EXPECT_THAT(standardError(), EndsWith(" two\n"));
}

} // namespace
} // namespace velloren
