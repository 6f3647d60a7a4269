#include "Tests/Platform/Freedesktop/LinkTest.h"
#include "Tests/Support/Socket.h"

#include <gmock/gmock.h>

#include <future>
#include <thread>

namespace velloren {

namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using ::testing::ElementsAre;

using DBusLinkTest = LinkTest;

/// A far end of another make: it may neither stall nor end the process.
class OddServer : public LinkTest {
  protected:
    /// Answers the first that comes with `opening`, and hangs up.
    [[nodiscard]] static std::jthread serverThatSays(const Socket& listening, const std::string& opening) {
        return std::jthread([&listening, opening] {
            const Socket accepted = listening.next();
            (void)accepted.hear();
            accepted.say(opening);
        });
    }

    /// From now on it is a main app of ours that serves there.
    void becomesOurs() {
        listen();
        std::filesystem::rename(endpoint().socketName(), path);
    }

    void getsEverythingInTheEnd() {
        proxy->createNewMeeting();
        EXPECT_TRUE(waitUntil([this] { return mainApp.requests.size() >= 2; }));
        EXPECT_THAT(std::exchange(mainApp.requests, {}), ElementsAre("open first", "create"));
        EXPECT_EQ(errors + invalidations, 0);
    }

    const std::string path = runtimeFolder / "peer.socket";
};

} // namespace

TEST_F(DBusLinkTest, BringsBackTheListOrThatThereIsNone) {
    connect(endpoint());
    const Dictionary meeting{{"id", "7"}, {"title", "\xc3\x9c, \"b\""}, {"startTime", ""}};
    using List = std::vector<Dictionary>;
    mainApp.withholds = false;
    for (const Communication::Meetings& meetings :
         std::initializer_list<Communication::Meetings>{std::nullopt, List(), List{meeting, {}}}) {
        mainApp.meetings = meetings;
        std::promise<Communication::Meetings> arrived;
        auto answer = arrived.get_future();
        proxy->fetchUpcomingMeetings([&](const auto& list) { arrived.set_value(list); });
        ASSERT_TRUE(waitUntil([&] { return answer.wait_for(0s) == std::future_status::ready; }));
        EXPECT_EQ(answer.get(), meetings);
    }
}

TEST_F(DBusLinkTest, DeliversWhatWasAskedBeforeTheConnectionWasReleased) {
    connect(endpoint());
    std::atomic<bool> answered = false;
    proxy->openMeetingWithId("last");
    proxy->fetchUpcomingMeetings([&](const auto&) { answered = true; });
    proxy.reset();
    connection.reset();
    ASSERT_TRUE(waitUntil([&] { return mainApp.withheld.size() == 1; }));
    mainApp.withheld.front()(std::nullopt);
    EXPECT_TRUE(waitUntil([&] { return answered.load(); }));
    EXPECT_THAT(mainApp.requests, ElementsAre("open last", "fetch"));
}

TEST_F(DBusLinkTest, KeepsWhatItIsGivenUntilItIsLetInOrHasToGiveItBack) {
    mainApp.accepts = false;
    connect(endpoint());
    proxy->openMeetingWithId("first");
    fetchInVain();
    proxy->createNewMeeting();
    const auto back = connection->takeBack();
    ASSERT_EQ(back.size(), 2u);
    EXPECT_EQ(back[0].method, "openMeetingWithId");
    EXPECT_THAT(back[0].arguments, ElementsAre("first"));
    EXPECT_EQ(back[1].method, "createNewMeeting");
    EXPECT_TRUE(waitUntil([&] { return errors == 1; })) << "the question has failed";

    proxy->openMeetingWithId("second");
    fetchInVain();
    EXPECT_TRUE(waitUntil([&] { return mainApp.refusals >= 3; }));
    mainApp.accepts = true;
    proxy->createNewMeeting();
    proxy->displaySyncing();
    proxy->displayNotSyncing();
    EXPECT_TRUE(waitUntil([&] { return mainApp.requests.size() == 5; }));
    EXPECT_THAT(mainApp.requests, ElementsAre("open second", "fetch", "create", "syncing", "not syncing"));
    EXPECT_TRUE(connection->takeBack().empty());
    EXPECT_EQ(errors + invalidations, 1);
}

TEST_F(DBusLinkTest, TellsOnceOfAnInterruptionAndFailsWhatWasAsked) {
    connect(endpoint());
    for (int count = 0; count < 3; ++count)
        fetchInVain();
    ASSERT_TRUE(waitUntil([&] { return mainApp.withheld.size() == 3; }));
    listener.reset();
    EXPECT_TRUE(waitUntil([&] { return errors == 3 && interruptions == 1; }));
    proxy->createNewMeeting();
    fetchInVain();
    EXPECT_TRUE(waitUntil([&] { return errors == 4; }));
    const auto back = connection->takeBack();
    ASSERT_EQ(back.size(), 1u);
    EXPECT_EQ(back.front().method, "createNewMeeting");
    EXPECT_EQ(interruptions + invalidations, 1);
}

TEST_F(DBusLinkTest, TellsOnceOfAnEndpointWhereNobodyIs) {
    for (const std::string& path :
         {std::string("/nonexistent/socket"), std::string("/dev/null"), runtimeFolder.path().string()}) {
        SCOPED_TRACE(path);
        connect(*Endpoint::ofSocketPath(path));
        EXPECT_TRUE(waitUntil([&] { return invalidations == 1; }));
        proxy->createNewMeeting();
        fetchInVain();
        EXPECT_TRUE(waitUntil([&] { return errors == 1; })) << "questions fail at once";
        connection.reset();
        EXPECT_TRUE(waitUntil([&] { return errors == 2; })) << "nobody took the request back";
        EXPECT_EQ(interruptions, 0);
    }
}

TEST_F(DBusLinkTest, RunsNoHandlerThatWasTakenAway) {
    connect(endpoint());
    fetchInVain();
    ASSERT_TRUE(waitUntil([&] { return mainApp.withheld.size() == 1; }));
    connection->setInterruptionHandler(nullptr);
    listener.reset();
    fetchInVain();
    EXPECT_TRUE(waitUntil([&] { return errors == 2; }));
    EXPECT_EQ(interruptions, 0);
}

TEST_F(OddServer, GetsEverythingOnceItLetsUsIn) {
    for (const auto& opening : {""s, "REJECTED EXTERNAL\r\n"s, "OK\r\n"s, std::string(100000, 'x')}) {
        SCOPED_TRACE(opening.substr(0, 40));
        const Socket odd(path, 8);
        connect(*Endpoint::ofSocketPath(path));
        proxy->openMeetingWithId("first");
        serverThatSays(odd, opening).join();
        becomesOurs();
        getsEverythingInTheEnd();
        std::filesystem::remove(path);
    }
}

TEST_F(OddServer, GetsEverythingOnceItAcceptsAgain) {
    std::optional<Socket> full(std::in_place, path, 0);
    std::optional<Socket> first(std::in_place);
    ASSERT_TRUE(first->connectTo(path));
    connect(*Endpoint::ofSocketPath(path));
    proxy->openMeetingWithId("first");
    const auto next = near->connectionToEndpoint(*Endpoint::ofSocketPath("/nonexistent/socket"));
    next->setInvalidationHandler([this] { ++invalidations; });
    next->resume();
    EXPECT_TRUE(waitUntil([this] { return invalidations.exchange(0) == 1; })) << "the first was tried before";
    (void)full->next(); // room for one more, which it never talks to
    becomesOurs();
    full.reset();
    getsEverythingInTheEnd();
}

TEST_F(OddServer, MayTalkNonsenseOnceWeAreIn) {
    const Socket odd(path, 8);
    const auto server = serverThatSays(
        odd, "DATA\r\nOK 00000000000000000000000000000000\r\nAGREE_UNIX_FD\r\n" + std::string(64, '\x7f'));
    connect(*Endpoint::ofSocketPath(path));
    fetchInVain();
    EXPECT_TRUE(waitUntil([this] { return errors == 1 && interruptions + invalidations == 1; }));
}

TEST_F(OddServer, MayNeverAnswerACallAndGoOn) {
    connect(endpoint(), {.callTimeout = 100ms});
    fetchInVain();
    EXPECT_TRUE(waitUntil([this] { return errors == 1; }));
    mainApp.withheld.front()(std::nullopt); // too late
    proxy->createNewMeeting();
    EXPECT_TRUE(waitUntil([this] { return mainApp.requests.size() == 2; }));
    EXPECT_EQ(interruptions + invalidations, 0);
}

} // namespace velloren
