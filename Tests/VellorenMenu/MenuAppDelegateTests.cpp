#include "Tests/Support/AgentTest.h"
#include "VellorenMenu/MenuAppDelegate.h"

#include <gmock/gmock.h>

#include <thread>

namespace velloren {

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Names what every delegate keeps to itself.
struct Opened : MainAppLink {
    static constexpr auto attempts = &Opened::autoRetryConnectionAttempt;
};

class MenuAppDelegateTest : public AgentTest {
  protected:
    MenuAppDelegateTest() { application.setDelegate(&delegate); }

    void launch() {
        delegate.applicationDidFinishLaunching();
        loop.runPending();
    }

    void pressIcon() { statusBar.latestButton->press({640, 15}); }

    void expectOpen(bool open) {
        EXPECT_EQ(delegate.popover().isShown(), open);
        EXPECT_EQ(delegate.icon().isHighlighted(), open);
        EXPECT_EQ(events.monitorCount(), open ? 1u : 0u);
        EXPECT_EQ(statusBar.toolTipAllowed, !open) << "the host's would lie over the popover";
    }

    MenuAppDelegate delegate{link};
};

} // namespace

TEST_F(MenuAppDelegateTest, StartsInOrderAndTriesNothingWithoutAMainApp) {
    statusBar.asked = [this] { log.info("the item is set up", {"", ""}); };
    launch();
    EXPECT_THAT(log.messages, ElementsAre("Registering menuAppListener endpoint SUCCESSFUL",
                                          "the item is set up", "Setting up Fabric"));
    EXPECT_TRUE(registry.endpoints.contains(menuAgent));
    EXPECT_THAT(crashlytics.starts, ElementsAre(true)) << "once, with the default registered";
    EXPECT_EQ(loop.pendingTimers(), 0u);
}

TEST_F(MenuAppDelegateTest, TriesARunningMainAppBeforeItListensAndStartsThoughTheRegistryRefuses) {
    workspace.instances[mainApp] = 1;
    registry.stores = false;
    launch();
    EXPECT_EQ(log.messages.front(), "Connection with main app is not yet established");
    EXPECT_THAT(log.lines, Contains(info("setupListeningForIncomingMethodCalls() Registering "
                                         "menuAppListener endpoint FAILED")));
    EXPECT_EQ(log.messages.back(), "Setting up Fabric");
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
    EXPECT_EQ(log.lines.front(), info("appLaunched Main app is launched"));
    EXPECT_EQ(log.lines.back(), info("setupMainAppCallerConnection(completion:) Connection to main app "
                                     "established with handler=<EndPointHandler: "
                                     "com.velloren.velloren-mac.agent>, endPoint=" +
                                     endpoint.address()));

    log.clear();
    delegate.*Opened::attempts = 7;
    delegate.appLaunched(FakeWorkspace::about(mainApp));
    EXPECT_EQ(delegate.*Opened::attempts, 0);
    loop.advance(RunLoop::Seconds(5));
    EXPECT_THAT(log.messages, ElementsAre("Main app is launched")) << "it is connected already";
    delegate.*Opened::attempts = 7;
    delegate.checkIfMainAppCallerConnectionEstablishedAndRetryIfNot();
    EXPECT_EQ(delegate.*Opened::attempts, 7) << "a check of a connection that stands changes nothing";

    log.clear();
    workspace.stop(mainApp);
    EXPECT_THAT(log.lines, ElementsAre(info("appTerminated Main app is terminated"),
                                       debug("clearUpMainAppCallerConnection() clearUpXPCConnection()")));
}

TEST_F(MenuAppDelegateTest, TakesNoNoticeOfOtherApplications) {
    launch();
    log.clear();
    delegate.*Opened::attempts = 7;
    for (const auto& notification :
         {FakeWorkspace::about("org.example.Other"), Notification{}, Notification{Notification::Info{}},
          Notification{Notification::Info{{"NSApplicationBundleIdentifier", std::monostate()}}}}) {
        delegate.appLaunched(notification);
        delegate.appTerminated(notification);
    }
    EXPECT_THAT(log.lines, IsEmpty());
    EXPECT_EQ(delegate.*Opened::attempts, 7);
}

TEST_F(MenuAppDelegateTest, NeverRefusesToTerminateAndTakesItsEndpointOutOfTheRegistry) {
    launch();
    ASSERT_TRUE(registry.endpoints.contains(menuAgent));
    log.clear();
    QEvent endOfSession(QEvent::Quit);
    QCoreApplication::sendEvent(qApp, &endOfSession);
    EXPECT_THAT(log.lines,
                ElementsAre(debug("applicationShouldTerminate applicationShouldTerminate: <Event: Quit>"),
                            debug("applicationWillTerminate applicationWillTerminate")));
    EXPECT_FALSE(registry.endpoints.contains(menuAgent));
    EXPECT_EQ(delegate.applicationShouldTerminate("<Sender>"), MenuAppDelegate::TerminateReply::TerminateNow);
}

TEST_F(MenuAppDelegateTest, DisplaysTheLatestSyncStateFromAnyThread) {
    launch();
    log.clear();
    std::thread([this] {
        delegate.displayNotSyncing();
        delegate.displaySyncing();
    }).join();
    EXPECT_THAT(log.lines, IsEmpty()) << "nothing happens off the main thread";
    loop.runPending();
    EXPECT_EQ(delegate.icon().shownImage()->name(), "menuIconBlackInSync");
    EXPECT_THAT(log.lines, ElementsAre(debug("displayNotSyncing() displayNotSyncing()"),
                                       debug("displaySyncing() displaySyncing()")));
}

TEST_F(MenuAppDelegateTest, OpensOnTheIconAndClosesOnItOrOnAPressElsewhere) {
    launch();
    pressIcon();
    EXPECT_EQ(events.maskAskedFor, 20u) << "the left and the right press and nothing else";
    expectOpen(true);
    events.post({EventType::RightMouseDown, {10, 500}});
    expectOpen(false);
    pressIcon();
    pressIcon();
    expectOpen(false);
    EXPECT_FALSE(delegate.popover().animates());
    delegate.showPopover(nullptr);
    delegate.showPopover(nullptr);
    EXPECT_EQ(events.monitorCount(), 2u) << "the first one stays for good";
    delegate.closePopover(nullptr);
    EXPECT_EQ(events.monitorCount(), 1u);
    pressIcon();
    EXPECT_DEATH(events.postWithoutEvent(), "fatal error: a click outside the popover");
}

TEST_F(MenuAppDelegateTest, OpensAwayFromTheIconOnASecondStartOrActivatesWhatIsOpen) {
    launch();
    pressIcon();
    EXPECT_FALSE(display.latestAnchor.isEmpty());
    pressIcon();
    delegate.applicationShouldHandleReopen();
    expectOpen(true);
    EXPECT_TRUE(display.latestAnchor.isEmpty()) << "nobody clicked there";
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(waitUntil([&] { return other.isActiveWindow(); }));
    delegate.applicationShouldHandleReopen();
    EXPECT_TRUE(waitUntil([this] { return delegate.popover().contentWindow()->isActiveWindow(); }));
}

} // namespace velloren
