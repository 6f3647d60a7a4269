#include "Platform/Foundation/SharedInstance.h"
#include "Platform/Freedesktop/Bus/DBusLink.h"
#include "Shared/Communication.h"
#include "Shared/EndPointHandling.h"
#include "Tests/Support/FakeLink.h"
#include "Tests/Support/ManualRunLoop.h"
#include "Tests/Support/PrivateBus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <mutex>

namespace velloren {

namespace {

using ::testing::ElementsAre;

/// A main app that notes what it is asked, and lets in whom it likes.
class Served final : public Communication, public ListenerDelegate {
  public:
    Meetings meetings;
    bool accepts = true;
    std::vector<std::string> requests;

    void openMeetingWithId(const std::string& id) override { requests.push_back("open " + id); }

    void createNewMeeting() override { requests.emplace_back("create"); }

    void fetchUpcomingMeetings(MeetingsReply reply) override { reply(meetings); }

    void displaySyncing() override { requests.emplace_back("syncing"); }

    void displayNotSyncing() override { requests.emplace_back("not syncing"); }

    bool listenerShouldAcceptNewConnection(Listener&, IncomingConnection& connection) override {
        connection.setExportedInterface(exportedCommunication(*this));
        return accepts;
    }
};

/// The link within the test, and the one over D-Bus: both have to keep the same contract.
struct FakeSide {
    FakeLink link;
    Endpoint endpoint = *Endpoint::parse("unix:path=/run/user/1000/velloren/main.socket");

    explicit FakeSide(Served& served) { link.serve(endpoint, exportedCommunication(served)); }

    Link& near() { return link; }

    void stop() { link.stop(endpoint); }
};

struct DBusSide {
    PrivateBus bus;
    EnvironmentVariable runtime{"XDG_RUNTIME_DIR", bus.folder().string()};
    DBusLink far;
    DBusLink link;
    std::unique_ptr<Listener> listener = far.anonymousListener();
    Endpoint endpoint = *Endpoint::parse("unix:path=/nonexistent");

    explicit DBusSide(Served& served) {
        listener->setDelegate(&served);
        listener->resume();
        endpoint = listener->endpoint().value();
    }

    Link& near() { return link; }

    void stop() { listener.reset(); }
};

template <class Side>
class LinkContract : public ::testing::Test {
  protected:
    LinkContract() {
        SharedInstance<RunLoop>::provide([] { return std::make_unique<ManualRunLoop>(); });
        side.emplace(served);
    }

    ~LinkContract() override {
        proxy.reset();
        connection.reset();
        side.reset();
        SharedInstance<RunLoop>::reset();
    }

    void connect(const Endpoint& endpoint) {
        connection = side->near().connectionToEndpoint(endpoint);
        connection->setRemoteObjectInterface(communicationInterface());
        connection->setInterruptionHandler([this] { ++interruptions; });
        connection->setInvalidationHandler([this] { ++invalidations; });
        proxy = std::dynamic_pointer_cast<Communication>(
            connection->remoteObjectProxyWithErrorHandler([this](const std::string& text) {
                const std::scoped_lock lock(mutex);
                error = text;
                ++errors;
            }));
        connection->resume();
    }

    /// Asks and waits for the answer.
    std::optional<std::size_t> fetchedCount() {
        std::atomic<int> answers = 0;
        std::optional<std::size_t> count;
        proxy->fetchUpcomingMeetings([&](const Communication::Meetings& meetings) {
            count = meetings ? std::optional(meetings->size()) : std::nullopt;
            ++answers;
        });
        EXPECT_TRUE(ManualRunLoop::shared().waitUntil([&] { return answers == 1; }));
        return count;
    }

    Served served;
    std::optional<Side> side;
    std::unique_ptr<Connection> connection;
    std::shared_ptr<Communication> proxy;
    std::atomic<int> interruptions = 0;
    std::atomic<int> invalidations = 0;
    std::atomic<int> errors = 0;
    std::mutex mutex;
    std::string error;
};

using Sides = ::testing::Types<FakeSide, DBusSide>;

class SideNames {
  public:
    template <class Side>
    static std::string GetName(int) {
        return std::is_same_v<Side, FakeSide> ? "Fake" : "DBus";
    }
};

} // namespace

TYPED_TEST_SUITE(LinkContract, Sides, SideNames);

TYPED_TEST(LinkContract, DeliversCallsInOrderAndOnce) {
    this->connect(this->side->endpoint);
    for (int round = 0; round < 20; ++round) {
        this->proxy->openMeetingWithId(std::to_string(round));
        this->proxy->createNewMeeting();
    }
    this->proxy->displaySyncing();
    this->proxy->displayNotSyncing();
    ASSERT_TRUE(ManualRunLoop::shared().waitUntil([&] { return this->served.requests.size() == 42; }));
    EXPECT_EQ(this->served.requests[38], "open 19");
    EXPECT_EQ(this->served.requests[39], "create");
    EXPECT_EQ(this->served.requests[41], "not syncing");
    EXPECT_EQ(this->errors, 0);
}

TYPED_TEST(LinkContract, BringsBackAListOrThatThereIsNone) {
    this->connect(this->side->endpoint);
    EXPECT_EQ(this->fetchedCount(), std::nullopt);
    this->served.meetings = std::vector<Dictionary>(3);
    EXPECT_EQ(this->fetchedCount(), 3u);
    this->served.meetings = std::vector<Dictionary>();
    EXPECT_EQ(this->fetchedCount(), 0u);
}

TYPED_TEST(LinkContract, DeliversWhatWasAskedBeforeTheConnectionWasReleased) {
    this->connect(this->side->endpoint);
    std::atomic<bool> answered = false;
    this->proxy->openMeetingWithId("last");
    this->proxy->fetchUpcomingMeetings([&](const Communication::Meetings&) { answered = true; });
    this->proxy.reset();
    this->connection.reset();
    EXPECT_TRUE(ManualRunLoop::shared().waitUntil([&] { return answered.load(); }));
    EXPECT_THAT(this->served.requests, ElementsAre("open last"));
}

TYPED_TEST(LinkContract, TellsOnceOfAnInterruption) {
    this->connect(this->side->endpoint);
    this->fetchedCount();
    this->side->stop();
    EXPECT_TRUE(ManualRunLoop::shared().waitUntil([&] { return this->interruptions == 1; }));
    this->proxy->createNewMeeting();
    EXPECT_TRUE(ManualRunLoop::shared().waitUntil([&] { return this->errors == 1; }));
    EXPECT_EQ(this->invalidations, 0);
}

TYPED_TEST(LinkContract, TellsOnceOfAnEndpointWhereNobodyIs) {
    this->connect(*Endpoint::parse("unix:path=/nonexistent/socket"));
    EXPECT_TRUE(ManualRunLoop::shared().waitUntil([&] { return this->invalidations == 1; }));
    this->proxy->createNewMeeting();
    EXPECT_TRUE(ManualRunLoop::shared().waitUntil([&] { return this->errors == 1; }));
    EXPECT_EQ(this->interruptions, 0);
}

TYPED_TEST(LinkContract, RunsNoHandlerThatWasTakenAway) {
    this->connect(this->side->endpoint);
    this->fetchedCount();
    this->connection->setInterruptionHandler(nullptr);
    this->side->stop();
    this->proxy->createNewMeeting();
    EXPECT_TRUE(ManualRunLoop::shared().waitUntil([&] { return this->errors == 1; }));
    EXPECT_EQ(this->interruptions, 0);
}

TYPED_TEST(LinkContract, ReportsACallThatNobodyServes) {
    this->connection = this->side->near().connectionToEndpoint(this->side->endpoint);
    this->connection->resume();
    EXPECT_EQ(this->connection->remoteObjectProxy(), nullptr) << "no interface was set";
    this->connection->setRemoteObjectInterface(
        {"/com/velloren/Communication", "com.velloren.Other", communicationInterface().makeProxy});
    this->proxy = std::dynamic_pointer_cast<Communication>(
        this->connection->remoteObjectProxyWithErrorHandler([this](const std::string& text) {
            const std::scoped_lock lock(this->mutex);
            this->error = text;
            ++this->errors;
        }));
    this->proxy->fetchUpcomingMeetings([](const auto&) { ADD_FAILURE() << "there is no answer"; });
    EXPECT_TRUE(ManualRunLoop::shared().waitUntil([&] { return this->errors == 1; }));
    const std::scoped_lock lock(this->mutex);
    EXPECT_THAT(this->error, ::testing::StartsWith("org.freedesktop.DBus.Error.Unknown"));
    EXPECT_THAT(this->error, ::testing::HasSubstr(": "));
}

namespace {

class DBusLinkTest : public LinkContract<DBusSide> {};

} // namespace

TEST_F(DBusLinkTest, ClosesTheConnectionsItsDelegateRefuses) {
    served.accepts = false;
    connect(side->endpoint);
    EXPECT_TRUE(ManualRunLoop::shared().waitUntil([&] { return invalidations == 1; }));
    EXPECT_TRUE(served.requests.empty());
}

TEST_F(DBusLinkTest, HasNoEndpointWithoutAPrivateRuntimeDirectory) {
    const auto endpointIn = [this](const std::optional<std::string>& folder) {
        const EnvironmentVariable runtime("XDG_RUNTIME_DIR", folder);
        const auto listener = side->link.anonymousListener();
        listener->resume();
        return listener->endpoint().has_value();
    };
    EXPECT_FALSE(endpointIn(std::nullopt));
    EXPECT_FALSE(endpointIn("/nonexistent"));
    const TemporaryDirectory folder;
    EXPECT_TRUE(endpointIn(folder.path()));
    std::filesystem::permissions(folder / "velloren", std::filesystem::perms::group_read,
                                 std::filesystem::perm_options::add);
    EXPECT_FALSE(endpointIn(folder.path())) << "others could read what goes on there";
    std::filesystem::remove_all(folder / "velloren");
    std::filesystem::create_directory_symlink("/tmp", folder / "velloren");
    EXPECT_FALSE(endpointIn(folder.path()));
    const TemporaryDirectory deep;
    EXPECT_FALSE(endpointIn((deep / std::string(120, 'd')).string())) << "no socket has so long a name";
}

TEST_F(DBusLinkTest, RemovesItsSocketWithTheListener) {
    const std::string path = side->endpoint.socketName();
    EXPECT_TRUE(std::filesystem::is_socket(path));
    side->listener.reset();
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(DBusLinkTest, MakesNoConnectionToAServiceWithoutABus) {
    const EnvironmentVariable address("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
    EXPECT_EQ(side->link.connectionToService("com.velloren.velloren-mac.agent"), nullptr);
}

TEST_F(DBusLinkTest, SendsToServicesWhatWasCalledRightBeforeItsEnd) {
    side->bus.addService("com.velloren.velloren-mac.agent", VELLOREN_AGENT);
    const auto registryOver = [](Link& link, std::unique_ptr<Connection>& kept) {
        kept = link.connectionToService("com.velloren.velloren-mac.agent");
        kept->setRemoteObjectInterface(endPointHandlingInterface());
        kept->resume();
        return std::dynamic_pointer_cast<EndPointHandling>(kept->remoteObjectProxy());
    };
    std::unique_ptr<Connection> kept;
    const auto registry = registryOver(side->link, kept);
    std::atomic<int> answers = 0;
    registry->registerListenerEndpoint(side->endpoint, "app",
                                       [&](bool stored) { answers += stored ? 1 : 100; });
    ASSERT_TRUE(ManualRunLoop::shared().waitUntil([&] { return answers == 1; }));
    {
        DBusLink shortLived;
        std::unique_ptr<Connection> connection;
        registryOver(shortLived, connection)->removeListenerEndpoint("app");
    }
    registry->retrieveListenerEndpoint("app", [&](const auto& endpoint) { answers += endpoint ? 100 : 1; });
    EXPECT_TRUE(ManualRunLoop::shared().waitUntil([&] { return answers >= 2; }));
    EXPECT_EQ(answers, 2);
}

} // namespace velloren
