#include "Tests/Support/AgentTest.h"
#include "VellorenMenu/MainAppLink.h"

#include <gmock/gmock.h>

#include <thread>

namespace velloren {

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class OpenedMainAppLink final : public MainAppLink {
  public:
    using MainAppLink::autoRetryConnectionAttempt;
    using MainAppLink::mainAppCallerConnection;
    using MainAppLink::mainAppCallerProxy;
    using MainAppLink::MainAppLink;
    using MainAppLink::operationsQueue;
    using MainAppLink::resetAttempts;
};

class MainAppLinkTest : public AgentTest {
  protected:
    void connect() {
        registerMainApp();
        delegate.autoRetryConnectionAttempt = 5;
        delegate.setupMainAppCallerConnection([this] { EXPECT_EQ(delegate.autoRetryConnectionAttempt, 0); });
        EXPECT_EQ(delegate.mainAppCallerConnection, nullptr) << "it is made in its turn";
        loop.runPending();
        EXPECT_NE(delegate.mainAppCallerProxy, nullptr);
        log.clear();
    }

    OpenedMainAppLink delegate{link};
};

using DeferredOperations = MainAppLinkTest;
using MainAppConnection = MainAppLinkTest;

} // namespace

TEST_F(MainAppConnection, IsTriedTenTimesHalfASecondApartThenNoMore) {
    delegate.checkIfMainAppCallerConnectionEstablishedAndRetryIfNot();
    EXPECT_EQ(registry.retrievals, 1) << "the first attempt is immediate";
    const std::string check = "checkIfMainAppCallerConnectionEstablishedAndRetryIfNot() ";
    const std::string setup = "setupMainAppCallerConnection(completion:) ";
    EXPECT_THAT(
        log.lines,
        ElementsAre(info(check + "Connection with main app is not yet established"),
                    info(check + "Retrying in 0.5 seconds to establish connection with main app again"),
                    StartsWith(info(setup + "Trying to establish connection with the main app. Running in "
                                            "thread: <Thread: ")),
                    info(setup + "Retrieving listener endpoint from main app failed, endPoint is nil")));
    loop.advance(RunLoop::Seconds(0.4));
    EXPECT_EQ(registry.retrievals, 1);
    loop.advance(RunLoop::Seconds(0.1));
    EXPECT_EQ(registry.retrievals, 2);
    loop.advance(RunLoop::Seconds(60));
    EXPECT_EQ(registry.retrievals, 10);
    EXPECT_THAT(log.messages, Contains(StartsWith("Retrying in 0.5 seconds")).Times(10));
    EXPECT_EQ(loop.pendingTimers(), 0u);
}

TEST_F(MainAppConnection, IsClearedUpWhenItBreaksAndNotMadeAgainByItself) {
    connect();
    delegate.setupMainAppCallerConnection([] { ADD_FAILURE() << "it stands already"; });
    log.clear();
    link.stop(endpoint);
    EXPECT_NE(delegate.mainAppCallerConnection, nullptr) << "it goes in its turn";
    loop.advance(RunLoop::Seconds(60));
    EXPECT_THAT(log.lines,
                ElementsAre(info("setupMainAppCallerConnection(completion:) XPC mainAppCallerConnection is "
                                 "interrupted"),
                            debug("clearUpMainAppCallerConnection() clearUpXPCConnection()")));
    EXPECT_EQ(delegate.mainAppCallerConnection, nullptr);
    EXPECT_EQ(delegate.mainAppCallerProxy, nullptr);
    EXPECT_EQ(registry.retrievals, 1);
    EXPECT_EQ(link.openConnections, 0);
    EXPECT_EQ(delegate.autoRetryConnectionAttempt, 5) << "as many are left as there were";
    link.serve(endpoint.address(), exportedCommunication(mainAppObject));
    connect();
    delegate.resetAttempts();
    link.stop(endpoint);
    loop.runPending();
    EXPECT_EQ(delegate.autoRetryConnectionAttempt, 0) << "all ten, for a main app that was just launched";
}

TEST_F(MainAppConnection, IsTriedTenTimesAfterTheLatestLaunchAlone) {
    for (int launch = 0; launch < 3; ++launch) {
        delegate.resetAttempts();
        delegate.checkIfMainAppCallerConnectionEstablishedAndRetryIfNot();
        loop.advance(RunLoop::Seconds(0.2));
    }
    EXPECT_EQ(registry.retrievals, 3);
    loop.advance(RunLoop::Seconds(0.29));
    EXPECT_EQ(registry.retrievals, 3) << "the checks of the earlier launches are no more";
    loop.advance(RunLoop::Seconds(0.02));
    EXPECT_EQ(registry.retrievals, 4);
    loop.advance(RunLoop::Seconds(60));
    EXPECT_EQ(registry.retrievals, 12);
}

TEST_F(MainAppConnection, NeedsTheMainThreadAndARegistryThatConforms) {
    const auto setup = [this] { delegate.setupMainAppCallerConnection(nullptr); };
    EXPECT_DEATH(std::thread(setup).join(), "fatal error: .* on the main thread only");
    link.conforming = false;
    setup();
    EXPECT_EQ(registry.retrievals, 0);
}

TEST_F(MainAppConnection, LogsTheErrorsOfItsProxyAndKeepsStanding) {
    connect();
    link.serve(endpoint.address(), ExportedInterface{"/x", "com.velloren.Other", {}});
    delegate.createNewMeeting();
    loop.runPending();
    EXPECT_THAT(log.lines.back(),
                StartsWith("error VellorenMenu/MenuAppDelegate setupMainAppCallerConnection(completion:) "
                           "Remote object proxy returned with error org.freedesktop.DBus.Error.Unknown"));
    EXPECT_NE(delegate.mainAppCallerConnection, nullptr);
}

TEST_F(MainAppConnection, FetchesMeetingsAndCountsThem) {
    std::vector<Communication::Meetings> answers;
    const auto fetch = [&] { delegate.fetchMeetings([&](auto answer) { answers.push_back(answer); }); };
    fetch();
    const std::string asking = debug("fetchMeetings Fetching meetings from main app...");
    EXPECT_THAT(log.lines, ElementsAre(asking)) << "nobody answers while it does not stand";
    connect();
    mainAppObject.meetings = std::vector<Dictionary>(2);
    fetch();
    mainAppObject.meetings.reset();
    fetch();
    EXPECT_THAT(answers, ElementsAre(std::vector<Dictionary>(2), std::nullopt));
    const std::string count = "fetchMeetings Velloren Menu agent.fetchUpcomingMeetings(), meetings count = ";
    EXPECT_THAT(log.lines, ElementsAre(asking, debug(count + "Optional(2)"), asking, debug(count + "nil")));
}

TEST_F(DeferredOperations, AreSentOldestFirstAfterTheConnectionIsMade) {
    std::vector<std::size_t> recorded;
    workspace.asked = [&] { recorded.push_back(delegate.operationsQueue.size()); };
    delegate.openMeeting("A");
    workspace.takesLaunches = false;
    delegate.createNewMeeting();
    workspace.instances[mainApp] = 2;
    delegate.openMeeting("B");
    EXPECT_EQ(workspace.queries, 3) << "a launch asks: the notice of an end may still be under way";
    EXPECT_THAT(recorded, ElementsAre(1, 2)) << "each is recorded before the main app is launched for it";
    const std::string missing = " XPC connection to main app doesn't exist. ";
    const std::string waiting = " operation is recorded, waiting for main app to launch...";
    EXPECT_EQ(log.lines[0], info("openMeeting" + missing + "Open meeting A" + waiting));
    const std::string launching = "info Shared/VApp:94 launchIfNotRunning() Launching " + mainApp;
    EXPECT_EQ(log.numberedLines[1], launching + ", launched=true");
    EXPECT_EQ(log.lines[2], info("createNewMeeting()" + missing + "Create new meeting" + waiting));
    EXPECT_EQ(log.numberedLines[3], launching + ", launched=false");
    connect();
    EXPECT_EQ(delegate.operationsQueue.size(), 3u) << "a bare connection sends nothing";
    delegate.sendDelayedOperationsToMainApp();
    EXPECT_THAT(mainAppObject.requests, ElementsAre("open A", "create", "open B"));
    const std::string sent = "sendDelayedOperationsToMainApp() Velloren Menu agent?.";
    EXPECT_THAT(log.lines,
                ElementsAre(debug(sent + "openMeeting(withId: A)"), debug(sent + "createNewMeeting()"),
                            debug(sent + "openMeeting(withId: B)")));
    EXPECT_TRUE(delegate.operationsQueue.empty());
}

TEST_F(DeferredOperations, WaitAgainInOrderWhenTheirConnectionEndsBeforeItStood) {
    const std::map<std::string, std::function<void()>> ends{
        {"the main app ended", [this] { delegate.clearUpMainAppCallerConnection(); }},
        {"nobody listened any more",
         [this] {
             link.stop(endpoint);
             EXPECT_EQ(log.messages.back(), "XPC mainAppCallerConnection is invalidated");
         }},
        {"it broke, and the main app ended at once",
         [this] {
             link.stop(endpoint);
             delegate.clearUpMainAppCallerConnection();
         }},
        {"another endpoint came late",
         [this] {
             const auto* former = delegate.mainAppCallerConnection.get();
             registry.withheld.at(0)(endpoint);
             link.stop(endpoint); // what this brings comes after the other endpoint
             link.serve(endpoint.address(), exportedCommunication(mainAppObject));
             loop.runPending();
             ASSERT_TRUE(delegate.mainAppCallerConnection);
             EXPECT_NE(delegate.mainAppCallerConnection.get(), former);
         }},
    };
    for (const auto& [name, end] : ends) {
        SCOPED_TRACE(name);
        link.serve(endpoint.address(), exportedCommunication(mainAppObject));
        link.setLetsIn(endpoint, false);
        registerMainApp();
        delegate.openMeeting("A");
        delegate.createNewMeeting();
        registry.withholds = true;
        delegate.setupMainAppCallerConnection([this] { delegate.sendDelayedOperationsToMainApp(); });
        registry.withholds = false;
        delegate.setupMainAppCallerConnection([this] { delegate.sendDelayedOperationsToMainApp(); });
        loop.runPending();
        delegate.openMeeting("B");
        EXPECT_TRUE(delegate.operationsQueue.empty()) << "the connection has them";
        end();
        loop.runPending();
        delegate.openMeeting("C");
        if (!delegate.mainAppCallerConnection) {
            EXPECT_EQ(delegate.operationsQueue.size(), 4u);
            link.serve(endpoint.address(), exportedCommunication(mainAppObject));
            delegate.checkIfMainAppCallerConnectionEstablishedAndRetryIfNot();
            loop.runPending();
        }
        link.setLetsIn(endpoint, true);
        EXPECT_THAT(std::exchange(mainAppObject.requests, {}),
                    ElementsAre("open A", "create", "open B", "open C"));
        delegate.clearUpMainAppCallerConnection();
        EXPECT_TRUE(delegate.operationsQueue.empty()) << "they have arrived";
        registry.withheld.clear();
        EXPECT_EQ(link.openConnections, 0);
    }
}

TEST_F(DeferredOperations, AreNotNeededWhileConnected) {
    connect();
    delegate.openMeeting("A");
    delegate.createNewMeeting();
    EXPECT_THAT(mainAppObject.requests, ElementsAre("open A", "create"));
    EXPECT_TRUE(delegate.operationsQueue.empty());
    EXPECT_TRUE(workspace.launches.empty());
    const std::string exists = " XPC connection to main app exists. ";
    const std::string sent = " operation is immediately sent to Agent, waiting for main app to receive...";
    EXPECT_THAT(log.lines, ElementsAre(info("openMeeting" + exists + "Open meeting A" + sent),
                                       info("createNewMeeting()" + exists + "Create new meeting" + sent)));
}

TEST_F(DeferredOperations, AreDroppedWithoutAProxyThatConforms) {
    registry.withholds = true;
    delegate.checkIfMainAppCallerConnectionEstablishedAndRetryIfNot();
    link.conforming = false;
    registry.withheld.at(0)(endpoint);
    loop.runPending();
    delegate.openMeeting("A");
    EXPECT_THAT(log.messages.back(), HasSubstr("exists. Open meeting A "));
    EXPECT_EQ(delegate.mainAppCallerProxy, nullptr);
    EXPECT_TRUE(delegate.operationsQueue.empty());
}

} // namespace velloren
