#include "Tests/Platform/Freedesktop/LinkTest.h"
#include "Tests/Support/FakeLink.h"

#include <gmock/gmock.h>

#include <future>

namespace velloren {

namespace {

using ::testing::ElementsAre;

/// The link within the test, and the one over D-Bus: both have to keep the same contract.
class LinkContract : public LinkTest, public ::testing::WithParamInterface<std::string> {
  protected:
    LinkContract() { fake.serve(endpoint, exportedCommunication(mainApp)); }

    void connect(const Endpoint& there) {
        if (GetParam() == "D-Bus")
            LinkTest::connect(there);
        else
            connectThrough(fake, there);
    }

    /// Asks, and brings back what arrives of the main app's answer.
    Communication::Meetings fetched(const Communication::Meetings& answer = {}) {
        std::promise<Communication::Meetings> arrived;
        proxy->fetchUpcomingMeetings([&](const auto& meetings) { arrived.set_value(meetings); });
        EXPECT_TRUE(waitUntil([&] { return !mainApp.questions.empty(); }));
        std::exchange(mainApp.questions, {}).front()(answer);
        return arrived.get_future().get();
    }

    void setLetsIn(bool letsIn) {
        mainApp.accepts = letsIn;
        fake.setLetsIn(endpoint, letsIn);
    }

    /// The methods of what the connection gives back.
    std::vector<std::string> givenBack() {
        std::vector<std::string> methods;
        for (const auto& request : connection->takeBack())
            methods.push_back(request.method);
        return methods;
    }

    void stopTheMainApp() {
        fake.stop(endpoint);
        listener.reset();
    }

    FakeLink fake;
    Endpoint endpoint = listener->endpoint().value();
};

using DBusLinkTest = LinkTest;

} // namespace

INSTANTIATE_TEST_SUITE_P(Link, LinkContract, ::testing::Values("fake", "D-Bus"));

TEST_P(LinkContract, DeliversCallsInOrderAndOnce) {
    connect(endpoint);
    std::vector<std::string> expected;
    for (int round = 0; round < 20; ++round) {
        proxy->openMeetingWithId(std::to_string(round));
        proxy->createNewMeeting();
        proxy->displaySyncing();
        proxy->displayNotSyncing();
        expected.insert(expected.end(),
                        {"open " + std::to_string(round), "create", "syncing", "not syncing"});
    }
    ASSERT_TRUE(waitUntil([&] { return mainApp.requests.size() >= expected.size(); }));
    EXPECT_EQ(mainApp.requests, expected);
    EXPECT_EQ(errors, 0);
}

TEST_P(LinkContract, BringsBackTheListOrThatThereIsNone) {
    connect(endpoint);
    const Dictionary meeting{{"id", "7"}, {"title", "\xc3\x9c, \"b\""}, {"startTime", ""}};
    using List = std::vector<Dictionary>;
    for (const Communication::Meetings& meetings :
         std::initializer_list<Communication::Meetings>{std::nullopt, List(), List{meeting, {}}})
        EXPECT_EQ(fetched(meetings), meetings);
}

TEST_P(LinkContract, DeliversWhatWasAskedBeforeTheConnectionWasReleased) {
    connect(endpoint);
    std::atomic<bool> answered = false;
    proxy->openMeetingWithId("last");
    proxy->fetchUpcomingMeetings([&](const auto&) { answered = true; });
    proxy.reset();
    connection.reset();
    ASSERT_TRUE(waitUntil([&] { return mainApp.questions.size() == 1; }));
    mainApp.questions.front()(std::nullopt);
    EXPECT_TRUE(waitUntil([&] { return answered.load(); }));
    EXPECT_THAT(mainApp.requests, ElementsAre("open last"));
}

TEST_P(LinkContract, KeepsWhatItIsGivenUntilTheFarEndLetsItIn) {
    setLetsIn(false);
    connect(endpoint);
    proxy->openMeetingWithId("first");
    proxy->fetchUpcomingMeetings([](const auto&) {});
    EXPECT_TRUE(waitUntil([&] { return mainApp.refusals >= 3 || GetParam() == "fake"; }));
    setLetsIn(true);
    proxy->createNewMeeting();
    EXPECT_TRUE(waitUntil([&] { return mainApp.requests.size() == 2 && mainApp.questions.size() == 1; }));
    EXPECT_THAT(mainApp.requests, ElementsAre("open first", "create"));
    EXPECT_THAT(givenBack(), ElementsAre());
    EXPECT_EQ(errors + invalidations, 0);
}

TEST_P(LinkContract, GivesBackWhatItDidNotDeliver) {
    setLetsIn(false);
    connect(endpoint);
    proxy->openMeetingWithId("first");
    fetchInVain();
    proxy->createNewMeeting();
    const auto back = connection->takeBack();
    ASSERT_EQ(back.size(), 2u);
    EXPECT_EQ(back[0].method, "openMeetingWithId");
    EXPECT_THAT(back[0].arguments, ElementsAre("first"));
    EXPECT_EQ(back[1].method, "createNewMeeting");
    EXPECT_TRUE(waitUntil([&] { return errors == 1; })) << "the question has failed";
    setLetsIn(true);
    proxy->displaySyncing();
    EXPECT_TRUE(waitUntil([&] { return !mainApp.requests.empty(); }));
    EXPECT_THAT(mainApp.requests, ElementsAre("syncing"));
}

TEST_P(LinkContract, TellsOnceOfAnInterruption) {
    connect(endpoint);
    fetched();
    stopTheMainApp();
    EXPECT_TRUE(waitUntil([&] { return interruptions == 1; }));
    proxy->createNewMeeting();
    fetchInVain();
    EXPECT_TRUE(waitUntil([&] { return errors == 1; }));
    EXPECT_THAT(givenBack(), ElementsAre("createNewMeeting"));
    EXPECT_EQ(interruptions, 1);
    EXPECT_EQ(invalidations, 0);
}

TEST_P(LinkContract, TellsOnceOfAnEndpointWhereNobodyIs) {
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

TEST_P(LinkContract, RunsNoHandlerThatWasTakenAway) {
    connect(endpoint);
    fetched();
    connection->setInterruptionHandler(nullptr);
    stopTheMainApp();
    fetchInVain();
    EXPECT_TRUE(waitUntil([&] { return errors == 1; }));
    EXPECT_EQ(interruptions, 0);
}

TEST_P(LinkContract, ReportsACallThatNobodyServes) {
    interface.name = "com.velloren.Other";
    connect(endpoint);
    fetchInVain();
    EXPECT_TRUE(waitUntil([&] { return errors == 1; }));
    EXPECT_THAT(latestError, ::testing::MatchesRegex("org\\.freedesktop\\.DBus\\.Error\\.Unknown.*: .*"));
}

TEST_F(DBusLinkTest, ListensOnlyInAPrivateRuntimeDirectoryAndTidiesUp) {
    const std::string path = listener->endpoint().value().socketName();
    EXPECT_TRUE(std::filesystem::is_socket(path));
    listener.reset();
    EXPECT_FALSE(std::filesystem::exists(path));

    const auto listensIn = [this](const std::optional<std::string>& folder) {
        runtime.set(folder);
        const auto another = far->anonymousListener();
        another->resume();
        return another->endpoint().has_value();
    };
    const TemporaryDirectory folder;
    const auto product = folder / "velloren";
    EXPECT_TRUE(listensIn(folder.path()));
    std::filesystem::permissions(product, std::filesystem::perms(0740));
    EXPECT_FALSE(listensIn(folder.path())) << "others could read what goes on there";
    std::filesystem::permissions(product, std::filesystem::perms::owner_all);
    std::filesystem::rename(product, folder / "elsewhere");
    std::filesystem::create_directory_symlink(folder / "elsewhere", product);
    EXPECT_FALSE(listensIn(folder.path())) << "somebody else may have said where it leads";
    std::filesystem::create_directory(folder / std::string(120, 'd'));
    EXPECT_FALSE(listensIn(folder / std::string(120, 'd'))) << "no socket has so long a name";
    EXPECT_FALSE(listensIn(std::nullopt));
    EXPECT_FALSE(listensIn("/nonexistent"));
}

} // namespace velloren
