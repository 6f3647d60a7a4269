#include "Tests/Platform/Link/DBus/LinkTest.h"
#include "Tests/Support/Socket.h"

#include <gmock/gmock.h>

#include <future>

namespace velloren {

namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using DBusLinkTest = LinkTest;

/// A far end of another make: it may neither stall nor end the process.
class OddServer : public LinkTest {
  protected:
    /// Answers the first that comes with `opening`, and hangs up.
    [[nodiscard]] static std::future<void> serverThatSays(const Socket& listening,
                                                          const std::string& opening) {
        return std::async(std::launch::async, [&listening, opening] {
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
        create();
        EXPECT_TRUE(waitUntil([this] { return mainApp.requests.size() >= 2; }));
        EXPECT_THAT(std::exchange(mainApp.requests, {}), ElementsAre("open first", "create"));
        EXPECT_EQ(errors + invalidations, 0);
    }

    const std::string path = runtimeFolder / "peer.socket";
};

} // namespace

TEST_F(DBusLinkTest, BringsBackTheListOrThatThereIsNone) {
    connect(endpoint());
    const Dictionary meeting{
        {"id", "7"}, {"title", "\u00dc \"\uFDCF\uFDF0\U0001F600\uFFFD\U0010FFFD"}, {"startTime", ""}};
    using List = std::vector<Dictionary>;
    mainApp.withholds = false;
    const auto answerTo = [this](const Communication::Meetings& meetings) {
        mainApp.meetings = meetings;
        std::optional<Communication::Meetings> answer;
        proxy->fetchUpcomingMeetings([&](const auto& list) { answer = list; });
        EXPECT_TRUE(waitUntil([&] { return answer.has_value(); }));
        return answer.value_or(std::nullopt);
    };
    for (const auto& meetings : std::initializer_list<Communication::Meetings>{
             std::nullopt, List(), List{meeting, {}}, List(Communication::limit.dictionaries, meeting)})
        EXPECT_EQ(answerTo(meetings), meetings);
    for (const auto& odd : {"\0"s, "\xFF"s, "\xF5"s, "\uFDD0"s, "\uFDEF"s, "\uFFFE"s, "\U0010FFFF"s})
        EXPECT_EQ(answerTo(List{{{"title", "a" + odd + "z"}}}), (List{{{"title", "a\uFFFDz"}}}))
            << "what cannot travel is replaced on the way";
    EXPECT_TRUE(answerTo(List{{{"title", "\xED\xA0\x80\xC0\x80"}}})) << "surrogates, and NUL in two bytes";
    EXPECT_EQ(errors, 0);
}

TEST_F(DBusLinkTest, DeliversWhatWasAskedBeforeTheConnectionWasReleased) {
    connect(endpoint());
    bool answered = false;
    open("last");
    proxy->fetchUpcomingMeetings([&](const auto&) { answered = true; });
    proxy.reset();
    connection.reset();
    ASSERT_TRUE(waitUntil([&] { return mainApp.withheld.size() == 1; }));
    mainApp.withheld.front()(std::nullopt);
    EXPECT_TRUE(waitUntil([&] { return answered; }));
    EXPECT_THAT(mainApp.requests, ElementsAre("open last", "fetch"));
}

TEST_F(DBusLinkTest, KeepsWhatItIsGivenUntilItIsLetInOrHasToGiveItBack) {
    mainApp.accepts = false;
    connect(endpoint());
    open("first");
    fetchInVain();
    create();
    connection->giveBack();
    EXPECT_THAT(std::exchange(returned, {}), ElementsAre("open first", "create"));
    EXPECT_TRUE(waitUntil([&] { return errors == 1; })) << "the question has failed";

    open("second");
    fetchInVain();
    EXPECT_TRUE(waitUntil([&] { return mainApp.refusals >= 3; }));
    mainApp.accepts = true;
    create();
    proxy->displaySyncing();
    proxy->displayNotSyncing();
    EXPECT_TRUE(waitUntil([&] { return mainApp.requests.size() == 5; }));
    EXPECT_THAT(mainApp.requests, ElementsAre("open second", "fetch", "create", "syncing", "not syncing"));
    connection->giveBack();
    EXPECT_THAT(returned, IsEmpty());
    EXPECT_EQ(errors + invalidations, 1);
}

TEST_F(DBusLinkTest, TellsOnceOfAnInterruptionAndFailsWhatWasAsked) {
    connect(endpoint());
    for (int count = 0; count < 3; ++count)
        fetchInVain();
    ASSERT_TRUE(waitUntil([&] { return mainApp.withheld.size() == 3; }));
    listener.reset();
    EXPECT_TRUE(waitUntil([&] { return errors == 3 && interruptions == 1; }));
    create();
    fetchInVain();
    EXPECT_TRUE(waitUntil([&] { return errors == 4; }));
    connection->giveBack();
    EXPECT_THAT(returned, ElementsAre("create"));
    EXPECT_EQ(interruptions + invalidations, 1);
}

TEST_F(DBusLinkTest, TellsOnceOfAnEndpointWhereNobodyIs) {
    for (const std::string& path :
         {std::string("/nonexistent/socket"), std::string("/dev/null"), runtimeFolder.path().string()}) {
        SCOPED_TRACE(path);
        connect(*Endpoint::ofSocketPath(path));
        EXPECT_TRUE(waitUntil([&] { return invalidations == 1; }));
        create();
        fetchInVain();
        EXPECT_TRUE(waitUntil([&] { return errors == 1; })) << "questions fail at once";
        connection.reset();
        EXPECT_TRUE(waitUntil([&] { return errors == 2; })) << "nobody had the request given back";
        EXPECT_EQ(interruptions, 0);
    }
}

TEST_F(OddServer, GetsEverythingOnceItLetsUsIn) {
    for (const auto& opening : {""s, "REJECTED EXTERNAL\r\n"s, "OK\r\n"s, std::string(100000, 'x')}) {
        SCOPED_TRACE(opening.substr(0, 40));
        std::optional<Socket> odd(std::in_place, path, 8);
        connect(*Endpoint::ofSocketPath(path));
        open("first");
        const auto server = serverThatSays(*odd, opening);
        EXPECT_TRUE(waitUntil([&] { return server.wait_for(0s) == std::future_status::ready; }));
        becomesOurs();
        odd.reset(); // it may have been tried again
        getsEverythingInTheEnd();
        std::filesystem::remove(path);
    }
}

TEST_F(OddServer, GetsEverythingOnceItAcceptsAgain) {
    std::optional<Socket> full(std::in_place, path, 0);
    std::optional<Socket> first(std::in_place);
    ASSERT_TRUE(first->connectTo(path));
    connect(*Endpoint::ofSocketPath(path));
    open("first");
    const auto next = near->connectionToEndpoint(*Endpoint::ofSocketPath("/nonexistent/socket"));
    next->setInvalidationHandler([this] { ++invalidations; });
    next->resume();
    EXPECT_TRUE(waitUntil([this] { return std::exchange(invalidations, 0) == 1; }))
        << "the first was tried before";
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
    connect(endpoint());
    fetchInVain();
    const auto patient = std::tuple(std::move(proxy), std::move(connection), std::move(near));
    connect(endpoint(), {.callTimeout = 100ms});
    fetchInVain();
    EXPECT_TRUE(waitUntil([this] { return errors == 1; }));
    EXPECT_EQ(mainApp.withheld.size(), 2u);
    for (const auto& answer : std::exchange(mainApp.withheld, {}))
        answer(std::nullopt); // too late for one of them
    create();
    EXPECT_TRUE(waitUntil([this] { return mainApp.requests.size() == 3; }));
    EXPECT_EQ(errors + interruptions + invalidations, 1);
}

TEST_F(OddServer, MayBeABusThatIsNotThereOrStandsStill) {
    const Socket full(path, 0);
    const Socket first;
    ASSERT_TRUE(first.connectTo(path));
    const Socket silent(runtimeFolder / "silent.socket", 8);
    for (const auto& bus : {(runtimeFolder / "silent.socket").string(), "/nonexistent"s, path}) {
        SCOPED_TRACE(bus);
        const EnvironmentVariable address("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + bus);
        near = std::make_unique<DBusLink>();
        use(near->connectionToService("com.velloren.Nobody"));
        fetchInVain();
        loop.runPending();
        EXPECT_EQ(errors, bus == "/nonexistent" || bus == path ? 1 : 0) << "one may begin to talk yet";
        disconnect();
    }
}

} // namespace velloren
