#include "Tests/Integration/MenuAgentTest.h"
#include "Tests/Support/ProcessFigures.h"

/// What only shows after a long time. Each takes minutes.
namespace velloren {

namespace {

class Soak : public MenuAgentTest {
  protected:
    void openAndClose(int times) {
        for (int round = 0; round < times; ++round) {
            openPopover();
            ASSERT_TRUE(closesOnClick()) << "in round " << round;
        }
    }
};

} // namespace

TEST_F(Soak, AThousandShowingsLeaveMemoryAndDescriptorsLevel) {
    startAgent();
    openAndClose(100);
    const auto descriptors = descriptorsOf(agent->pid());
    const long memory = privateMemoryOf(agent->pid());
    openAndClose(1000);
    RecordProperty("KiB before", std::to_string(memory));
    RecordProperty("KiB after", std::to_string(privateMemoryOf(agent->pid())));
    EXPECT_EQ(descriptorsOf(agent->pid()), descriptors);
    EXPECT_LT(privateMemoryOf(agent->pid()), memory + 512) << memory << " KiB before";
    EXPECT_GE(countInLog("MainViewController viewWillAppear()"), 1100);
}

TEST_F(Soak, AHundredMainAppsLeaveMemoryAndDescriptorsLevel) {
    startAgent();
    installMainApp();
    std::ptrdiff_t descriptors = 0;
    long memory = 0;
    for (int round = 1; round <= 110; ++round) {
        openMeeting(0);
        ASSERT_TRUE(desktop.waitUntil([&] { return requests().size() == std::size_t(round); }));
        kill(mainAppProcesses().back(), SIGKILL);
        ASSERT_TRUE(waitForLog("Main app is terminated", round));
        if (round == 10) {
            descriptors = descriptorsOf(agent->pid());
            memory = privateMemoryOf(agent->pid());
        }
    }
    EXPECT_TRUE(desktop.waitUntil([&] { return descriptorsOf(agent->pid()) == descriptors; }));
    EXPECT_LT(privateMemoryOf(agent->pid()), memory + 512) << memory << " KiB before";
}

} // namespace velloren
