#include "Tests/Support/Process.h"
#include "Tests/Support/TemporaryDirectory.h"

#include <gmock/gmock.h>

#include <array>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <unistd.h>

namespace velloren {

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

class CrashReport : public ::testing::Test {
  protected:
    /// The exit status of the program that ends so.
    int statusOf(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), CRASHING_PROGRAM);
        arguments.insert(arguments.begin(), launcher.begin(), launcher.end());
        Process process(arguments,
                        {{"XDG_STATE_HOME", folder.path()},
                         // The sanitizers would take the signals for themselves.
                         {"ASAN_OPTIONS", "handle_segv=0:handle_sigbus=0"}},
                        folder / "output");
        const int status = process.wait();
        output = process.output();
        return status;
    }

    [[nodiscard]] std::vector<std::filesystem::path> reports() const {
        std::vector<std::filesystem::path> found;
        if (std::filesystem::exists(crashes))
            for (const auto& entry : std::filesystem::directory_iterator(crashes))
                found.push_back(entry.path());
        return found;
    }

    std::vector<std::string> launcher; ///< what starts the program, if that is not the test
    TemporaryDirectory folder;
    std::filesystem::path crashes = folder / "velloren/crashes";
    std::string output;
};

} // namespace

TEST_F(CrashReport, TellsWhatHappenedAndLeavesTheExitStatusAlone) {
    for (const auto& [end, head, function] :
         {std::tuple("segv", "Signal: SIGSEGV (11), address 0x7", "writeToForbiddenPage"),
          std::tuple("fatal-error",
                     "Signal: SIGABRT (6)\nReason: fatal error: this cannot be: file Unit, line 7\n",
                     "fatalError"),
          std::tuple("throw", "Reason: uncaught exception std::runtime_error: the notes are gone\n",
                     "throwOne"),
          std::tuple("overflow", "Signal: SIGSEGV (11), address 0x", "useUpTheStack")}) {
        std::filesystem::remove_all(crashes);
        const int status = statusOf({end, crashes});
        ASSERT_EQ(reports().size(), 1) << end << "\n" << output;
        std::ostringstream report;
        report << std::ifstream(reports().front()).rdbuf();
        EXPECT_THAT(report.str(), AllOf(HasSubstr("Velloren 2.1 (57), crash report\nTime: 20"),
                                        HasSubstr(head), HasSubstr(function), HasSubstr("main line 11.\n"),
                                        HasSubstr("main line 60.\n"), Not(HasSubstr("main line 10.\n"))));
        EXPECT_EQ(status, statusOf({end}));
        EXPECT_EQ(reports().size(), 1) << "nothing is reported without the start";
    }
}

TEST_F(CrashReport, DoesNotWaitForWhoReadsStandardError) {
    std::array<int, 2> full{};
    ASSERT_EQ(::pipe2(full.data(), O_NONBLOCK), 0);
    while (::write(full[1], "full", 4) > 0) {
    }
    for (const char* end : {"segv", "fatal-error", "throw"}) {
        launcher.clear();
        const int status = statusOf({end});
        std::filesystem::remove(folder / "velloren/crash.log");
        launcher = {"sh", "-c", "exec \"$@\" 2> /proc/self/fd/" + std::to_string(full[1]), "sh"};
        EXPECT_EQ(statusOf({end, crashes}), status) << end;
        EXPECT_EQ(reports().size(), 1) << end;
        EXPECT_GT(std::filesystem::file_size(folder / "velloren/crash.log"), 60 * 40U) << "in the file it is";
        std::filesystem::remove_all(crashes);
    }
    ::close(full[0]), ::close(full[1]);
}

TEST_F(CrashReport, IsNotNeededAfterAnExceptionThatTheUserLetsPass) {
    std::ofstream(folder / "defaults.ini") << "[General]\nNSApplicationCrashOnExceptions=false\n";
    EXPECT_EQ(statusOf({"throw", crashes, folder / "defaults.ini"}), 3);
    EXPECT_THAT(output, HasSubstr(" error CrashReporting/LocalCrashlytics:"));
    EXPECT_THAT(output, HasSubstr("Uncaught exception: the notes are gone\n"));
    EXPECT_TRUE(reports().empty());
}

TEST_F(CrashReport, LetsTheProcessCrashAsEverWhereItCannotBeWritten) {
    std::ofstream(folder / "velloren") << "a file";
    const int bare = statusOf({"segv"});
    EXPECT_EQ(statusOf({"segv", crashes}), bare);
    EXPECT_EQ(statusOf({"segv", "nowhere"}), bare);
    EXPECT_THAT(output, Not(HasSubstr("report of this crash")));
}

TEST_F(CrashReport, StandsBesideTheNewestTen) {
    std::filesystem::create_directories(crashes / "2000-folder.txt");
    std::ofstream(crashes / "0000-notes.md") << "not a report";
    for (int day = 10; day < 25; ++day)
        std::ofstream(crashes / ("2026-11-" + std::to_string(day) + "T00-00-00Z-1.txt")) << day;
    statusOf({"segv", crashes});
    EXPECT_EQ(reports().size(), 13) << "ten, that of this crash, and what is no report";
    EXPECT_FALSE(std::filesystem::exists(crashes / "2026-11-14T00-00-00Z-1.txt"));
    EXPECT_TRUE(std::filesystem::exists(crashes / "2026-11-15T00-00-00Z-1.txt"));
}

} // namespace velloren
