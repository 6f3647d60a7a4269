#include "Tests/Integration/MenuAgentTest.h"

namespace velloren {

namespace {

using MainApp = MenuAgentTest;

} // namespace

TEST_F(MainApp, IsAskedWhatWasWantedWhileItWasOffInOrderAndOnceAndIsLaunchedAgain) {
    startAgent();
    openMeeting(0);
    createMeeting();
    openMeeting(1);
    EXPECT_TRUE(waitForLog("Launching com.velloren.velloren-mac, launched=false", 3));
    EXPECT_EQ(countInLog("operation is recorded, waiting for main app to launch..."), 3);

    // Not before, or the first request would have started it.
    installMainApp();
    openMeeting(2);
    ASSERT_TRUE(waitForLog("Connection to main app established"));
    std::vector<std::string> expected{"open demo-1", "create", "open demo-2", "open demo-3"};
    expectRequests(expected);
    EXPECT_EQ(mainAppProcesses().size(), 1u);
    EXPECT_EQ(countInLog("Launching com.velloren.velloren-mac, launched=true"), 1);

    openPopover();
    EXPECT_TRUE(waitForLog("Velloren Menu agent.fetchUpcomingMeetings(), meetings count = Optional(4)"));
    EXPECT_TRUE(closesWithin([this] { clickOpenButton(2); }));
    expected.emplace_back("open demo-3");
    expectRequests(expected);
    EXPECT_EQ(countInLog("Open meeting demo-3 operation is immediately sent to Agent"), 1);

    kill(mainAppProcesses().back(), SIGKILL);
    ASSERT_TRUE(waitForLog("clearUpXPCConnection()"));
    ASSERT_TRUE(waitForLog("Main app is terminated"));
    createMeeting();
    expected.emplace_back("create");
    expectRequests(expected);
    EXPECT_EQ(mainAppProcesses().size(), 2u);
}

} // namespace velloren
