#include "Platform/Foundation/SharedInstance.h"
#include "Tests/Support/FakeEnds.h"
#include "Tests/Support/FakeLink.h"
#include "Tests/Support/FakeWorkspace.h"
#include "Tests/Support/ManualRunLoop.h"
#include "Tests/Support/RecordingLogger.h"
#include "VellorenMenu/MainAppLink.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace velloren {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

const std::string mainApp = "com.velloren.velloren-mac";
const std::string registryName = "com.velloren.velloren-mac.agent";

class OpenedMainAppLink final : public MainAppLink {
  public:
    using MainAppLink::autoRetryConnectionAttempt;
    using MainAppLink::mainAppCallerConnection;
    using MainAppLink::mainAppCallerProxy;
    using MainAppLink::MainAppLink;
    using MainAppLink::operationsQueue;
};

class MainAppLinkTest : public ::testing::Test {
  protected:
    MainAppLinkTest() {
        SharedInstance<RunLoop>::provide([] { return std::make_unique<ManualRunLoop>(); });
        link.serve(registryName, exportedEndPointHandling(registry));
        link.serve(endpoint, exportedCommunication(mainAppObject));
    }

    ~MainAppLinkTest() override {
        SharedInstance<RunLoop>::reset();
        SharedInstance<Workspace>::reset();
        SharedInstance<Logger>::reset();
    }

    static ManualRunLoop& loop() { return ManualRunLoop::shared(); }

    void connect() {
        registry.endpoints.insert_or_assign(mainApp, endpoint);
        delegate.setupMainAppCallerConnection(nullptr);
        loop().runPending();
        log.clear();
    }

    [[nodiscard]] std::ptrdiff_t count(const std::string& start) const {
        const auto messages = log.messages();
        return std::count_if(messages.begin(), messages.end(),
                             [&](const std::string& message) { return message.starts_with(start); });
    }

    const Endpoint endpoint = *Endpoint::parse("unix:path=/run/user/1000/velloren/main.socket");
    FakeWorkspace& workspace = FakeWorkspace::install();
    RecordingLogger& log = RecordingLogger::install();
    FakeLink link; // outlives what the ends below keep of its connections
    TestRegistry registry;
    TestMainApp mainAppObject;
    OpenedMainAppLink delegate{link};
};

using DeferredOperations = MainAppLinkTest;
using MainAppConnection = MainAppLinkTest;

constexpr auto prefix = "VellorenMenu/MenuAppDelegate ";

} // namespace

TEST_F(MainAppConnection, IsTriedTenTimesHalfASecondApartThenNoMore) {
    delegate.checkIfMainAppCallerConnectionEstablishedAndRetryIfNot();
    EXPECT_EQ(registry.retrievals, 1) << "the first attempt is immediate";
    EXPECT_THAT(
        log.lines(),
        ElementsAre("info VellorenMenu/MenuAppDelegate "
                    "checkIfMainAppCallerConnectionEstablishedAndRetryIfNot() Connection with main app "
                    "is not yet established",
                    "info VellorenMenu/MenuAppDelegate "
                    "checkIfMainAppCallerConnectionEstablishedAndRetryIfNot() Retrying in 0.5 seconds "
                    "to establish connection with main app again",
                    StartsWith("info VellorenMenu/MenuAppDelegate "
                               "setupMainAppCallerConnection(completion:) Trying to establish connection "
                               "with the main app. Running in thread: <Thread: "),
                    "info VellorenMenu/MenuAppDelegate setupMainAppCallerConnection(completion:) "
                    "Retrieving listener endpoint from main app failed, endPoint is nil"));
    loop().advance(RunLoop::Seconds(0.4));
    EXPECT_EQ(registry.retrievals, 1);
    loop().advance(RunLoop::Seconds(0.1));
    EXPECT_EQ(registry.retrievals, 2);
    loop().advance(RunLoop::Seconds(60));
    EXPECT_EQ(registry.retrievals, 10);
    EXPECT_EQ(count("Trying to establish connection"), 10);
    EXPECT_EQ(count("Retrying in 0.5 seconds"), 10);
    EXPECT_EQ(loop().pendingTimers(), 0u);
}

TEST_F(MainAppConnection, OnTheThirdAttemptResetsTheCounterAndEndsTheChain) {
    delegate.createNewMeeting();
    delegate.checkIfMainAppCallerConnectionEstablishedAndRetryIfNot();
    loop().advance(RunLoop::Seconds(0.7));
    registry.endpoints.insert_or_assign(mainApp, endpoint);
    loop().advance(RunLoop::Seconds(0.3));
    EXPECT_EQ(registry.retrievals, 3);
    EXPECT_EQ(delegate.autoRetryConnectionAttempt, 0);
    EXPECT_THAT(mainAppObject.requests, ElementsAre("create"));
    EXPECT_EQ(
        count("Connection to main app established with handler=<EndPointHandler: "
              "com.velloren.velloren-mac.agent>, endPoint=unix:path=/run/user/1000/velloren/main.socket"),
        1);
    log.clear();
    loop().advance(RunLoop::Seconds(60));
    EXPECT_THAT(log.lines(), IsEmpty());
    EXPECT_THAT(mainAppObject.requests, ElementsAre("create"));
}

TEST_F(MainAppConnection, IsLeftAloneOnceItStands) {
    connect();
    bool completed = false;
    delegate.setupMainAppCallerConnection([&] { completed = true; });
    delegate.checkIfMainAppCallerConnectionEstablishedAndRetryIfNot();
    loop().runPending();
    EXPECT_FALSE(completed);
    EXPECT_EQ(registry.retrievals, 1);
    EXPECT_EQ(delegate.autoRetryConnectionAttempt, 0);
}

TEST_F(MainAppConnection, IsClearedUpWhenItBreaksAndNotMadeAgainByItself) {
    connect();
    link.stop(endpoint);
    loop().runPending();
    EXPECT_THAT(log.lines(), ElementsAre(std::string("info ") + prefix +
                                             "setupMainAppCallerConnection(completion:) XPC "
                                             "mainAppCallerConnection is interrupted",
                                         std::string("debug ") + prefix +
                                             "clearUpMainAppCallerConnection() clearUpXPCConnection()"));
    EXPECT_EQ(delegate.mainAppCallerConnection, nullptr);
    EXPECT_EQ(delegate.mainAppCallerProxy, nullptr);
    loop().advance(RunLoop::Seconds(60));
    EXPECT_EQ(registry.retrievals, 1);
    EXPECT_EQ(link.openConnections, 0);
}

TEST_F(MainAppConnection, IsClearedUpWhenTheEndpointIsDead) {
    link.stop(endpoint);
    registry.endpoints.insert_or_assign(mainApp, endpoint);
    delegate.setupMainAppCallerConnection(nullptr);
    loop().runPending();
    EXPECT_EQ(count("XPC mainAppCallerConnection is invalidated"), 1);
    EXPECT_EQ(count("clearUpXPCConnection()"), 1);
    EXPECT_EQ(delegate.mainAppCallerConnection, nullptr);
}

TEST_F(MainAppConnection, SaysNothingMoreOnceItWasClearedUp) {
    connect();
    delegate.clearUpMainAppCallerConnection();
    log.clear();
    link.stop(endpoint);
    loop().runPending();
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(MainAppConnection, IsReplacedByEachEndpointThatArrivesLate) {
    registry.withholds = true;
    delegate.setupMainAppCallerConnection(nullptr);
    delegate.setupMainAppCallerConnection(nullptr);
    ASSERT_EQ(registry.withheld.size(), 2u);
    registry.withheld[0](endpoint);
    loop().runPending();
    const auto* first = delegate.mainAppCallerConnection.get();
    registry.withheld[1](endpoint);
    loop().runPending();
    EXPECT_NE(delegate.mainAppCallerConnection.get(), first);
    EXPECT_EQ(count("Connection to main app established"), 2);
}

TEST_F(MainAppConnection, KeepsTheRegistryHandlerUntilItsReply) {
    registry.withholds = true;
    delegate.setupMainAppCallerConnection(nullptr);
    EXPECT_EQ(link.openConnections, 1);
    registry.withheld.front()(std::nullopt);
    registry.withheld.clear();
    EXPECT_EQ(link.openConnections, 0);
}

TEST_F(MainAppConnection, IsNotTriedWithoutARegistryThatConforms) {
    link.conforming = false;
    delegate.setupMainAppCallerConnection(nullptr);
    EXPECT_EQ(registry.retrievals, 0);
    EXPECT_EQ(log.messages().size(), 1u);
}

TEST_F(MainAppConnection, StopsTheProcessOffTheMainThread) {
    loop().setCurrent(false);
    EXPECT_DEATH(delegate.setupMainAppCallerConnection(nullptr), "fatal error: ");
    EXPECT_EQ(count("Trying to establish connection"), 0) << "only in the process that died";
}

TEST_F(MainAppConnection, LogsTheErrorsOfItsProxyAndKeepsStanding) {
    connect();
    link.serve(endpoint, ExportedInterface{"/x", "com.velloren.Other", {}});
    delegate.createNewMeeting();
    loop().runPending();
    EXPECT_THAT(log.lines().back(),
                StartsWith("error VellorenMenu/MenuAppDelegate "
                           "setupMainAppCallerConnection(completion:) Remote object proxy "
                           "returned with error org.freedesktop.DBus.Error.UnknownMethod"));
    EXPECT_NE(delegate.mainAppCallerConnection, nullptr);
}

TEST_F(MainAppConnection, FetchesMeetingsAndCountsThem) {
    connect();
    std::optional<Communication::Meetings> answer;
    mainAppObject.meetings = std::vector<Dictionary>(2);
    delegate.fetchMeetings([&](Communication::Meetings meetings) { answer = std::move(meetings); });
    ASSERT_TRUE(answer);
    EXPECT_EQ((*answer)->size(), 2u);
    mainAppObject.meetings.reset();
    delegate.fetchMeetings([&](Communication::Meetings meetings) { answer = std::move(meetings); });
    EXPECT_FALSE(*answer) << "no list is handed on as none";
    const std::string start = std::string("debug ") + prefix + "fetchMeetings ";
    const std::string counted = start + "Velloren Menu agent.fetchUpcomingMeetings(), meetings count = ";
    EXPECT_THAT(log.lines(),
                ElementsAre(start + "Fetching meetings from main app...", counted + "Optional(2)",
                            start + "Fetching meetings from main app...", counted + "nil"));
}

TEST_F(MainAppConnection, NeverCallsBackForMeetingsWhileDisconnected) {
    bool called = false;
    delegate.fetchMeetings([&](const Communication::Meetings&) { called = true; });
    loop().advance(RunLoop::Seconds(60));
    EXPECT_FALSE(called);
    EXPECT_THAT(log.messages(), ElementsAre("Fetching meetings from main app..."));
}

TEST_F(DeferredOperations, AreSentOldestFirstAfterTheConnectionIsMade) {
    delegate.openMeeting("A");
    delegate.createNewMeeting();
    delegate.openMeeting("B");
    EXPECT_THAT(workspace.launches, ElementsAre(mainApp, mainApp, mainApp));
    EXPECT_THAT(
        log.lines(),
        ElementsAre(std::string("info ") + prefix +
                        "openMeeting XPC connection to main app doesn't exist. Open meeting A operation is "
                        "recorded, waiting for main app to launch...",
                    HasSubstr("Launching com.velloren.velloren-mac, launched=true"),
                    std::string("info ") + prefix +
                        "createNewMeeting() XPC connection to main app doesn't exist. Create new meeting "
                        "operation is recorded, waiting for main app to launch...",
                    HasSubstr("Launching"), HasSubstr("Open meeting B operation is recorded"),
                    HasSubstr("Launching")));
    log.clear();
    registry.endpoints.insert_or_assign(mainApp, endpoint);
    delegate.checkIfMainAppCallerConnectionEstablishedAndRetryIfNot();
    loop().runPending();
    EXPECT_THAT(mainAppObject.requests, ElementsAre("open A", "create", "open B"));
    const std::string start = std::string("debug ") + prefix + "sendDelayedOperationsToMainApp() ";
    const auto lines = log.lines();
    EXPECT_THAT(std::vector(lines.end() - 3, lines.end()),
                ElementsAre(start + "Velloren Menu agent?.openMeeting(withId: A)",
                            start + "Velloren Menu agent?.createNewMeeting()",
                            start + "Velloren Menu agent?.openMeeting(withId: B)"));
    EXPECT_TRUE(delegate.operationsQueue.empty());
}

TEST_F(DeferredOperations, LaunchNothingWhileTheMainAppRuns) {
    workspace.instances[mainApp] = 1;
    delegate.createNewMeeting();
    EXPECT_TRUE(workspace.launches.empty());
    EXPECT_EQ(delegate.operationsQueue.size(), 1u);
}

TEST_F(DeferredOperations, SurviveAFailedLaunchAndALostConnection) {
    workspace.takesLaunches = false;
    delegate.openMeeting("A");
    delegate.openMeeting("A");
    delegate.clearUpMainAppCallerConnection();
    connect();
    EXPECT_EQ(delegate.operationsQueue.size(), 2u) << "a bare connection sends nothing";
    delegate.sendDelayedOperationsToMainApp();
    EXPECT_THAT(mainAppObject.requests, ElementsAre("open A", "open A"));
}

TEST_F(DeferredOperations, AreNotNeededWhileConnected) {
    connect();
    delegate.openMeeting("A");
    delegate.createNewMeeting();
    EXPECT_THAT(mainAppObject.requests, ElementsAre("open A", "create"));
    EXPECT_TRUE(delegate.operationsQueue.empty());
    EXPECT_TRUE(workspace.launches.empty());
    EXPECT_THAT(
        log.messages(),
        ElementsAre("XPC connection to main app exists. Open meeting A operation is immediately sent to "
                    "Agent, waiting for main app to receive...",
                    "XPC connection to main app exists. Create new meeting operation is immediately sent "
                    "to Agent, waiting for main app to receive..."));
}

TEST_F(DeferredOperations, AreDroppedOneByOneWithoutAProxyButLogged) {
    delegate.openMeeting("A");
    delegate.createNewMeeting();
    log.clear();
    delegate.sendDelayedOperationsToMainApp();
    EXPECT_THAT(log.messages(), ElementsAre("Velloren Menu agent?.openMeeting(withId: A)",
                                            "Velloren Menu agent?.createNewMeeting()"));
    EXPECT_TRUE(delegate.operationsQueue.empty());
    log.clear();
    delegate.sendDelayedOperationsToMainApp();
    EXPECT_THAT(log.lines(), IsEmpty());
}

} // namespace velloren
