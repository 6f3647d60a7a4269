#include "Tests/Support/AgentTest.h"
#include "VellorenMenu/ClosePopover.h"
#include "VellorenMenu/MenuAppDelegate.h"

#include <gmock/gmock.h>

#include <thread>

namespace velloren {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class MenuAppDelegateTest : public AgentTest {
  protected:
    MenuAppDelegateTest() { application.setDelegate(&delegate); }

    void launch() {
        delegate.applicationDidFinishLaunching();
        loop().runPending();
    }

    void pressIcon() { statusBar.latestButton->press({640, 15}); }

    static Event click(EventType type) { return {type, {10, 500}}; }

    MenuAppDelegate delegate{link};
};

} // namespace

TEST_F(MenuAppDelegateTest, StartsInOrderAndTriesNothingWithoutAMainApp) {
    launch();
    EXPECT_THAT(log.messages(),
                ElementsAre("Registering menuAppListener endpoint SUCCESSFUL", "Setting up Fabric"));
    EXPECT_EQ(workspace.observerCount(), 2u);
    EXPECT_TRUE(registry.endpoints.contains(menuAgent));
    EXPECT_EQ(statusBar.lengthAskedFor, 28.0);
    EXPECT_EQ(delegate.icon().size(), QSize(28, 22));
    EXPECT_THAT(crashlytics.starts, ElementsAre(true)) << "once, with the default registered";
    EXPECT_EQ(loop().pendingTimers(), 0u);
}

TEST_F(MenuAppDelegateTest, TriesARunningMainAppBeforeItListens) {
    workspace.instances[mainApp] = 1;
    launch();
    EXPECT_THAT(log.messages(),
                ElementsAre("Connection with main app is not yet established",
                            "Retrying in 0.5 seconds to establish connection with main app again",
                            HasSubstr("Trying to establish connection"), HasSubstr("endPoint is nil"),
                            "Registering menuAppListener endpoint SUCCESSFUL", "Setting up Fabric"));
}

TEST_F(MenuAppDelegateTest, SaysWhenTheRegistryRefuses) {
    registry.stores = false;
    launch();
    EXPECT_THAT(log.lines().front(),
                "info VellorenMenu/MenuAppDelegate setupListeningForIncomingMethodCalls() "
                "Registering menuAppListener endpoint FAILED");
}

TEST_F(MenuAppDelegateTest, StartsWithoutAListenerOrAPlaceForItsSocket) {
    link.hasListeners = false;
    launch();
    EXPECT_THAT(log.messages(), ElementsAre("Setting up Fabric"));
    link.hasListeners = true;
    link.hasRuntimeFolder = false;
    MenuAppDelegate other(link);
    other.applicationDidFinishLaunching();
    EXPECT_TRUE(registry.endpoints.empty());
}

TEST_F(MenuAppDelegateTest, LetsNobodyIn) {
    launch();
    ASSERT_EQ(link.listenerDelegate, &delegate);

    class Incoming final : public IncomingConnection {
        void setExportedInterface(ExportedInterface) override { ADD_FAILURE() << "nothing is exported"; }
    } incoming;

    const auto listener = link.anonymousListener();
    EXPECT_FALSE(link.listenerDelegate->listenerShouldAcceptNewConnection(*listener, incoming));
}

TEST_F(MenuAppDelegateTest, ConnectsWhenTheMainAppIsLaunchedAndClearsUpWhenItEnds) {
    launch();
    log.clear();
    startMainApp();
    EXPECT_EQ(log.lines().front(), "info VellorenMenu/MenuAppDelegate appLaunched Main app is launched");
    EXPECT_THAT(log.messages().back(), HasSubstr("Connection to main app established"));

    log.clear();
    delegate.appLaunched(FakeWorkspace::about(mainApp));
    loop().advance(RunLoop::Seconds(5));
    EXPECT_THAT(log.messages(), ElementsAre("Main app is launched")) << "it is connected already";

    log.clear();
    workspace.stop(mainApp);
    EXPECT_THAT(log.lines(),
                ElementsAre("info VellorenMenu/MenuAppDelegate appTerminated Main app is terminated",
                            "debug VellorenMenu/MenuAppDelegate clearUpMainAppCallerConnection() "
                            "clearUpXPCConnection()"));
}

TEST_F(MenuAppDelegateTest, TakesNoNoticeOfOtherApplications) {
    launch();
    log.clear();
    for (const auto& notification :
         {FakeWorkspace::about("org.example.Other"), Notification{}, Notification{Notification::Info{}},
          Notification{Notification::Info{{"NSApplicationBundleIdentifier", std::monostate()}}}}) {
        delegate.appLaunched(notification);
        delegate.appTerminated(notification);
    }
    EXPECT_THAT(log.lines(), IsEmpty());
    EXPECT_EQ(loop().pendingTimers(), 0u);
}

TEST_F(MenuAppDelegateTest, StartsTheChainAfreshAtEachLaunch) {
    launch();
    workspace.start(mainApp);
    loop().advance(RunLoop::Seconds(60));
    log.clear();
    workspace.start(mainApp);
    loop().advance(RunLoop::Seconds(60));
    const auto messages = log.messages();
    EXPECT_EQ(std::count(messages.begin(), messages.end(), "Connection with main app is not yet established"),
              10);
}

TEST_F(MenuAppDelegateTest, KeepsWaitingRequestsThroughTheMainAppsEnd) {
    launch();
    delegate.openMeeting("A");
    workspace.start(mainApp);
    workspace.stop(mainApp);
    startMainApp();
    EXPECT_THAT(mainAppObject.requests, ElementsAre("open A"));
}

TEST_F(MenuAppDelegateTest, NeverRefusesToTerminateAndForgetsItsEndpoint) {
    launch();
    delegate.createNewMeeting();
    log.clear();
    EXPECT_EQ(delegate.applicationShouldTerminate("<Sender>"),
              ApplicationDelegate::TerminateReply::TerminateNow);
    delegate.applicationWillTerminate();
    EXPECT_THAT(
        log.lines(),
        ElementsAre("debug VellorenMenu/MenuAppDelegate applicationShouldTerminate "
                    "applicationShouldTerminate: <Sender>",
                    "debug VellorenMenu/MenuAppDelegate applicationWillTerminate applicationWillTerminate"));
    EXPECT_FALSE(registry.endpoints.contains(menuAgent));
    link.conforming = false;
    delegate.applicationWillTerminate();
}

TEST_F(MenuAppDelegateTest, DisplaysTheLatestSyncStateFromAnyThread) {
    launch();
    log.clear();
    std::thread([this] {
        delegate.displaySyncing();
        delegate.displayNotSyncing();
        delegate.displaySyncing();
    }).join();
    EXPECT_THAT(log.lines(), IsEmpty()) << "nothing happens off the main thread";
    loop().runPending();
    EXPECT_EQ(delegate.icon().state(), MenubarIcon::State::syncing);
    EXPECT_EQ(delegate.icon().shownImage()->name(), "menuIconBlackInSync");
    EXPECT_THAT(log.lines(),
                ElementsAre("debug VellorenMenu/MenuAppDelegate displaySyncing() displaySyncing()",
                            "debug VellorenMenu/MenuAppDelegate displayNotSyncing() displayNotSyncing()",
                            "debug VellorenMenu/MenuAppDelegate displaySyncing() displaySyncing()"));
}

TEST_F(MenuAppDelegateTest, OpensAndClosesOnTheIconWithOneMonitorWhileOpen) {
    launch();
    EXPECT_EQ(events.monitorCount(), 0u);
    for (int round = 0; round < 3; ++round) {
        pressIcon();
        EXPECT_TRUE(delegate.popover().isShown());
        EXPECT_TRUE(delegate.icon().isHighlighted());
        EXPECT_EQ(events.monitorCount(), 1u);
        pressIcon();
        EXPECT_FALSE(delegate.popover().isShown());
        EXPECT_FALSE(delegate.icon().isHighlighted());
        EXPECT_EQ(events.monitorCount(), 0u);
    }
    EXPECT_FALSE(delegate.popover().animates());
}

TEST_F(MenuAppDelegateTest, ClosesOnALeftOrRightPressElsewhereAndNoOther) {
    launch();
    for (const EventType type : {EventType::LeftMouseDown, EventType::RightMouseDown}) {
        pressIcon();
        events.post(click(EventType::OtherMouseDown));
        EXPECT_TRUE(delegate.popover().isShown());
        events.post(click(type));
        EXPECT_FALSE(delegate.popover().isShown());
        EXPECT_FALSE(delegate.icon().isHighlighted());
        EXPECT_EQ(events.monitorCount(), 0u);
    }
}

TEST_F(MenuAppDelegateTest, StopsTheProcessAtAnOutsideClickWithoutItsEvent) {
    launch();
    pressIcon();
    EXPECT_DEATH(events.postWithoutEvent(), "fatal error: ");
}

TEST_F(MenuAppDelegateTest, HighlightsAndWatchesEvenWithoutAButton) {
    statusBar.givesButton = false;
    MenuAppDelegate buttonless(link);
    buttonless.applicationDidFinishLaunching();
    buttonless.showPopover(nullptr);
    EXPECT_FALSE(buttonless.popover().isShown());
    EXPECT_TRUE(buttonless.icon().isHighlighted());
    EXPECT_EQ(events.monitorCount(), 1u);
    buttonless.closePopover(nullptr);
    EXPECT_EQ(events.monitorCount(), 0u);
}

TEST_F(MenuAppDelegateTest, LetsAnyViewCloseThePopoverThroughTheApplication) {
    launch();
    pressIcon();
    View view;
    application.setDelegate(nullptr);
    closePopover(view);
    EXPECT_TRUE(delegate.popover().isShown()) << "there is no delegate to do it";
    application.setDelegate(&delegate);
    closePopover(view);
    EXPECT_FALSE(delegate.popover().isShown());
    EXPECT_EQ(events.monitorCount(), 0u);
}

} // namespace velloren
