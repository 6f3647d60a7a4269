#include "Tests/Integration/MenuAgentTest.h"
#include "Tests/Support/ProcessFigures.h"

#include <algorithm>
#include <chrono>
#include <thread>

/// What others on its session may do to the agent. VELLOREN_FAULTS tells how many times as often as usual,
/// and VELLOREN_SEED repeats the randomness of another run.
namespace velloren {

namespace {

int often(int count) {
    const char* factor = std::getenv("VELLOREN_FAULTS");
    return count * (factor ? std::max(1, std::atoi(factor)) : 1);
}

class Faults : public MenuAgentTest {
  protected:
    Faults() { startAgent(); }

    void TearDown() override {
        agent->signal(SIGTERM);
        expectOrderlyEnd();
        EXPECT_EQ(countInLog("applicationShouldTerminate: <Signal: SIGTERM>"), 1);
        const std::filesystem::path state(std::getenv("XDG_STATE_HOME"));
        EXPECT_TRUE(std::filesystem::is_empty(state / "velloren/crashes"));
    }

    void suffer(const std::string& family, int times) {
        const auto driver =
            desktop.start("/usr/bin/python3", {FAULTS, family, std::to_string(times), desktop.folder()});
        while (driver->isRunning())
            VirtualDesktop::waitUntil([&] { return !driver->isRunning(); });
        std::printf("%s", driver->output().c_str());
        std::filesystem::remove(desktop.folder() / "python3");
        ASSERT_EQ(driver->wait(), 0);
    }

    /// What must not grow: descriptors, threads, resources of the X server.
    [[nodiscard]] std::string figures() const {
        const std::string process = std::to_string(agent->pid());
        std::string clients;
        desktop.run({"xrestop", "-b", "-m", "1"}, &clients);
        const auto name = std::min(clients.find("PID: " + process), clients.find("velloren-menu"));
        const auto start = std::min(clients.find("windows", name), clients.size());
        EXPECT_LT(start, clients.size()) << "xrestop does not list it: " << clients;
        return std::to_string(descriptorsOf(agent->pid())) + " descriptors, " +
               std::to_string(sumInFile("/proc/" + process + "/status", "Threads:")) + " threads\n" +
               clients.substr(start, clients.find("unknowns", start) - start);
    }

    void expectLevel(const std::function<void()>& suffering, [[maybe_unused]] long moreKibibytes) {
        std::this_thread::sleep_until(settled);
        const std::string before = figures();
        const long memory = writtenMemoryOf(agent->pid());
        suffering();
        EXPECT_TRUE(desktop.waitUntil([&] { return figures() == before; })) << figures() << before;
        std::printf("written memory %ld KiB, before %ld\n", writtenMemoryOf(agent->pid()), memory);
#if !defined(__SANITIZE_ADDRESS__) // it keeps what is freed
        EXPECT_LT(writtenMemoryOf(agent->pid()), memory + moreKibibytes);
#endif
    }

  private:
    /// By then the agent knows the fonts and has given back what starting took.
    std::chrono::steady_clock::time_point settled =
        std::chrono::steady_clock::now() + std::chrono::seconds(8);
};

} // namespace

TEST_F(Faults, OfMainAppsThatAreSlowSilentDyingLyingOrHugeLoseNoRequest) {
    suffer("main_apps", std::max(1, often(1) / 4));
}

TEST_F(Faults, OfMainAppsKilledAtAnyMomentLoseNoRequestButWithThem) {
    suffer("killed_main_apps", often(10));
    expectLevel([&] { suffer("killed_main_apps", often(40)); }, 1024);
}

TEST_F(Faults, OfARegistryThatHangsOrIsKilledLoseNoRequest) {
    suffer("registries", often(1));
}

TEST_F(Faults, OfPanelsThatAreKilledLeaveTheIconInTheBarAndNothingElse) {
    const auto killPanels = [this](int count) {
        for (int killed = 0; killed < count; ++killed) {
            desktop.stopPanel();
            desktop.startBar();
            ASSERT_TRUE(desktop.waitUntil([this] { return desktop.itemCount() == 1; })) << killed;
        }
    };
    killPanels(1);
    expectLevel([&] { killPanels(often(3)); }, 512);
}

TEST_F(Faults, OfTheManyOpeningsLeaveNothing) {
    for (int round = 0; round < often(10); ++round) {
        openPopover();
        ASSERT_TRUE(closesOnClick()) << "in round " << round;
    }
    suffer("openings", 200); // the agent gives memory back seconds after its start
    desktop.moveTo(VirtualDesktop::elsewhere);
    const int before = showings();
    expectLevel([&] { suffer("openings", often(490)); }, 1024); // the host's menu is filled after each, too
    EXPECT_EQ(showings(), before + often(490));
}

} // namespace velloren
