#include "Tests/Integration/MenuAgentTest.h"

namespace velloren {

namespace {

using MainApp = MenuAgentTest;
using ForeignMainApp = MenuAgentTest;

const std::vector<std::string> threeRequests{"open demo-1", "create", "open demo-2"};

/// What a test's name can hold of `text`.
std::string lettersOf(std::string text) {
    std::erase_if(text, [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); });
    return text;
}

} // namespace

class MainAppJourney : public MenuAgentTest {
  protected:
    void clickOpenCreateOpen() {
        openPopover();
        clickOpenButton(0);
        ASSERT_TRUE(desktop.waitUntil([this] { return !desktop.popover(); }));
        openPopover();
        clickCreateRow();
        ASSERT_TRUE(desktop.waitUntil([this] { return !desktop.popover(); }));
        openPopover();
        clickOpenButton(1);
        ASSERT_TRUE(desktop.waitUntil([this] { return !desktop.popover(); }));
    }

    /// The requests are made while the main app is off: the bus may start it only after the last.
    void makesRequestsBeforeTheMainAppComes(const std::function<void()>& install) {
        startAgent();
        clickOpenCreateOpen();
        EXPECT_EQ(countInLog("operation is recorded, waiting for main app to launch..."), 3);
        EXPECT_EQ(countInLog("Launching com.velloren.velloren-mac, launched=false"), 3);
        install();
        openPopover();
        clickOpenButton(2);
        ASSERT_TRUE(waitForLog("Connection to main app established"));
        auto expected = threeRequests;
        expected.emplace_back("open demo-3");
        EXPECT_TRUE(waitForRequests(expected)) << ::testing::PrintToString(requests());
        EXPECT_EQ(mainAppProcesses().size(), 1u) << "one main app was started";
        EXPECT_EQ(countInLog("Launching com.velloren.velloren-mac, launched=true"), 1);
    }

    void isFedByTheMainApp() {
        openPopover();
        EXPECT_TRUE(waitForLog("Velloren Menu agent.fetchUpcomingMeetings(), meetings count = Optional(4)"));
        clickOpenButton(2);
        auto expected = threeRequests;
        expected.insert(expected.end(), {"open demo-3", "open demo-3"});
        EXPECT_TRUE(waitForRequests(expected)) << ::testing::PrintToString(requests());
        EXPECT_EQ(countInLog("Open meeting demo-3 operation is immediately sent to Agent"), 1);
    }
};

TEST_F(MainAppJourney, DeliversWhatWasAskedForWhileItWasOffInOrderAndOnce) {
    makesRequestsBeforeTheMainAppComes([this] { installStandIn(); });
    isFedByTheMainApp();
}

TEST_F(MainAppJourney, IsTheSameWithAMainAppOfAnotherMake) {
    makesRequestsBeforeTheMainAppComes([this] { installForeignMainApp(); });
    isFedByTheMainApp();
}

TEST_F(MainAppJourney, GoesOnAfterTheMainAppIsKilled) {
    installStandIn();
    startAgent();
    openPopover();
    clickOpenButton(0);
    ASSERT_TRUE(waitForRequests({"open demo-1"}));
    for (int round = 1; round <= 2; ++round) {
        kill(mainAppProcesses().back(), SIGKILL);
        ASSERT_TRUE(waitForLog("Main app is terminated", round));
        EXPECT_TRUE(waitForLog("clearUpXPCConnection()", round));
        openPopover();
        clickCreateRow();
        ASSERT_TRUE(waitForLog("Create new meeting operation is recorded", round));
        ASSERT_TRUE(waitForLog("Connection to main app established", round + 1));
        ASSERT_TRUE(desktop.waitUntil([&] { return requests().size() == std::size_t(1 + round); }));
    }
    EXPECT_TRUE(agent->isRunning());
}

TEST_F(MainAppJourney, WaitsForAMainAppThatRegistersLate) {
    installStandIn("--register-after 1.2");
    startAgent();
    openPopover();
    clickOpenButton(0);
    EXPECT_TRUE(waitForRequests({"open demo-1"}));
    EXPECT_GE(countInLog("endPoint is nil"), 2);
}

class OddRegistry : public MainAppJourney, public ::testing::WithParamInterface<const char*> {};

TEST_P(OddRegistry, LeavesTheAgentWithItsPopoverAndTenAttempts) {
    installRegistry(GetParam());
    installStandIn();
    agent = desktop.start(binaries + "/velloren-menu");
    openPopover();
    clickOpenButton(0);
    ASSERT_TRUE(waitForLog("Main app is launched"));
    ASSERT_TRUE(waitForLog("Retrying in 0.5 seconds", 10));
    openPopover();
    EXPECT_TRUE(closesWithin([this] { desktop.click(VirtualDesktop::elsewhere); }));
    EXPECT_EQ(countInLog("SUCCESSFUL"), 0);
    agent->signal(SIGTERM);
    EXPECT_EQ(agent->wait(), 0);
}

INSTANTIATE_TEST_SUITE_P(, OddRegistry, ::testing::Values("/nonexistent", "/bin/false", "/bin/sleep 60"),
                         [](const auto& info) { return lettersOf(info.param); });

struct OddReply {
    const char* mode;
    const char* logged;
};

class OddMainApp : public MainAppJourney, public ::testing::WithParamInterface<OddReply> {};

TEST_P(OddMainApp, LeavesTheAgentAliveAndItsPopoverWorking) {
    installForeignMainApp(GetParam().mode);
    startAgent();
    openPopover();
    clickOpenButton(0);
    ASSERT_TRUE(waitForLog("Connection to main app established"));
    ASSERT_TRUE(desktop.waitUntil([this] { return !desktop.popover(); }));
    openPopover();
    EXPECT_TRUE(waitForLog(GetParam().logged));
    EXPECT_TRUE(closesWithin([this] { desktop.click(VirtualDesktop::elsewhere); }));
    openPopover();
    EXPECT_TRUE(agent->isRunning());
}

INSTANTIATE_TEST_SUITE_P(, OddMainApp,
                         ::testing::Values(OddReply{"--reply wrong-type", "meetings count = nil"},
                                           OddReply{"--reply not-strings", "meetings count = Optional(3)"},
                                           OddReply{"--reply many", "meetings count = Optional(100000)"},
                                           OddReply{"--reply never", "Fetching meetings from main app..."},
                                           OddReply{"--never-authenticate",
                                                    "Fetching meetings from main app..."}),
                         [](const auto& info) { return lettersOf(info.param.mode); });

} // namespace velloren
