#include "Tests/Integration/MenuAgentTest.h"

namespace velloren {

namespace {

using MainApp = MenuAgentTest;

class MainAppOfEitherMake : public MenuAgentTest,
                            public ::testing::WithParamInterface<MenuAgentTest::Make> {};

class OddRegistry : public MenuAgentTest, public ::testing::WithParamInterface<const char*> {};

/// With the options of a main app of another make, and what the agent then logs.
class OddMainApp : public MenuAgentTest,
                   public ::testing::WithParamInterface<std::pair<std::string, std::string>> {};

} // namespace

TEST_P(MainAppOfEitherMake, IsAskedWhatWasWantedWhileItWasOffInOrderAndOnce) {
    startAgent();
    openMeeting(0);
    createMeeting();
    openMeeting(1);
    EXPECT_TRUE(waitForLog("Launching com.velloren.velloren-mac, launched=false", 3));
    EXPECT_EQ(countInLog("operation is recorded, waiting for main app to launch..."), 3);

    // Not before, or the first request would have started it.
    installMainApp(GetParam());
    openMeeting(2);
    ASSERT_TRUE(waitForLog("Connection to main app established"));
    std::vector<std::string> expected{"open demo-1", "create", "open demo-2", "open demo-3"};
    expectRequests(expected);
    EXPECT_EQ(mainAppProcesses().size(), 1u);
    EXPECT_EQ(countInLog("Launching com.velloren.velloren-mac, launched=true"), 1);

    openPopover();
    EXPECT_TRUE(waitForLog("Velloren Menu agent.fetchUpcomingMeetings(), meetings count = Optional(4)"));
    clickOpenButton(2);
    expected.emplace_back("open demo-3");
    expectRequests(expected);
    EXPECT_EQ(countInLog("Open meeting demo-3 operation is immediately sent to Agent"), 1);
}

INSTANTIATE_TEST_SUITE_P(, MainAppOfEitherMake,
                         ::testing::Values(MenuAgentTest::Make::StandIn, MenuAgentTest::Make::Foreign),
                         [](const auto& info) {
                             return info.param == MenuAgentTest::Make::StandIn ? "StandIn" : "Foreign";
                         });

TEST_F(MainApp, IsLaunchedAgainAfterItIsKilled) {
    installMainApp();
    startAgent();
    openMeeting(0);
    std::vector<std::string> expected{"open demo-1"};
    expectRequests(expected);
    for (int round = 1; round <= 2; ++round) {
        kill(mainAppProcesses().back(), SIGKILL);
        ASSERT_TRUE(waitForLog("Main app is terminated", round));
        EXPECT_TRUE(waitForLog("clearUpXPCConnection()", round));
        createMeeting();
        ASSERT_TRUE(waitForLog("Create new meeting operation is recorded", round));
        ASSERT_TRUE(waitForLog("Connection to main app established", round + 1));
        expected.emplace_back("create");
        expectRequests(expected);
    }
}

TEST_P(OddRegistry, LeavesTheAgentWithItsPopoverAndTenAttempts) {
    installRegistry(GetParam());
    installMainApp();
    agent = desktop.start(binaries + "/velloren-menu");
    openMeeting(0);
    ASSERT_TRUE(waitForLog("Main app is launched"));
    ASSERT_TRUE(waitForLog("Retrying in 0.5 seconds", 10));
    openPopover();
    EXPECT_TRUE(closesOnClick());
    EXPECT_EQ(countInLog("SUCCESSFUL"), 0);
    agent->signal(SIGTERM);
    EXPECT_EQ(agent->wait(), 0);
}

INSTANTIATE_TEST_SUITE_P(, OddRegistry, ::testing::Values("/nonexistent", "/bin/false", "/bin/sleep 60"));

TEST_P(OddMainApp, LeavesTheAgentAliveAndItsPopoverWorking) {
    const auto& [options, logged] = GetParam();
    installMainApp(Make::Foreign, options);
    startAgent();
    openMeeting(0);
    ASSERT_TRUE(waitForLog("Connection to main app established"));
    openPopover();
    EXPECT_TRUE(waitForLog(logged));
    EXPECT_TRUE(closesOnClick());
    openPopover();
    EXPECT_TRUE(agent->isRunning());
}

INSTANTIATE_TEST_SUITE_P(, OddMainApp,
                         ::testing::Values(std::pair("--reply not-strings", "meetings count = Optional(3)"),
                                           std::pair("--reply many", "meetings count = nil")));

} // namespace velloren
