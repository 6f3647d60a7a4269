#include "Platform/Foundation/SharedInstance.h"
#include "Platform/Freedesktop/Bus/DBusLink.h"
#include "Shared/Communication.h"
#include "Tests/Support/ManualRunLoop.h"
#include "Tests/Support/PrivateBus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <array>
#include <atomic>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

/// Peers that break the rules, on either end of the link: none of them may stall or end the process.
namespace velloren {

namespace {

using namespace std::chrono_literals;
using ::testing::HasSubstr;
using ::testing::StartsWith;

sockaddr_un addressOf(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
}

/// The end of a socket; closed with it.
class Socket {
  public:
    Socket() : descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {}

    explicit Socket(int descriptor) : descriptor(descriptor) {}

    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    ~Socket() { close(descriptor); }

    void listenAt(const std::string& path, int backlog) const {
        const sockaddr_un address = addressOf(path);
        ASSERT_EQ(bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        ASSERT_EQ(listen(descriptor, backlog), 0);
    }

    [[nodiscard]] bool connectTo(const std::string& path) const {
        const sockaddr_un address = addressOf(path);
        return connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    }

    void say(const std::string& text) const { send(descriptor, text.data(), text.size(), MSG_NOSIGNAL); }

    /// What comes next; empty when the other end closed instead.
    [[nodiscard]] std::string hear() const {
        std::array<char, 4096> buffer{};
        const ssize_t count = read(descriptor, buffer.data(), buffer.size());
        return count > 0 ? std::string(buffer.data(), std::size_t(count)) : std::string();
    }

    [[nodiscard]] Socket next() const { return Socket(accept(descriptor, nullptr, nullptr)); }

  private:
    int descriptor;
};

class OddPeerTest : public ::testing::Test {
  protected:
    OddPeerTest() {
        SharedInstance<RunLoop>::provide([] { return std::make_unique<ManualRunLoop>(); });
    }

    ~OddPeerTest() override {
        disconnect();
        SharedInstance<RunLoop>::reset();
    }

    void disconnect() {
        proxy.reset();
        connection.reset();
        link.reset();
    }

    void connect(const Endpoint& endpoint, const DBusLink::Options& options) {
        disconnect();
        interruptions = invalidations = errors = 0;
        link = std::make_unique<DBusLink>(options);
        connection = link->connectionToEndpoint(endpoint);
        connection->setRemoteObjectInterface(communicationInterface());
        connection->setInterruptionHandler([this] { ++interruptions; });
        connection->setInvalidationHandler([this] { ++invalidations; });
        proxy = std::dynamic_pointer_cast<Communication>(
            connection->remoteObjectProxyWithErrorHandler([this](const std::string&) { ++errors; }));
        connection->resume();
    }

    void countsAsNoConnection(const Endpoint& endpoint) {
        connect(endpoint, {.handshakeTimeout = 200ms});
        proxy->fetchUpcomingMeetings([](const auto&) { ADD_FAILURE() << "there is no answer"; });
        EXPECT_TRUE(ManualRunLoop::shared().waitUntil([this] { return invalidations == 1 && errors == 1; }));
        proxy->createNewMeeting();
        EXPECT_TRUE(ManualRunLoop::shared().waitUntil([this] { return errors == 2; }))
            << "later calls fail at once";
        EXPECT_EQ(interruptions, 0);
    }

    TemporaryDirectory folder;
    const std::string path = folder / "peer.socket";
    const Endpoint endpoint = *Endpoint::ofSocketPath(path);
    std::unique_ptr<DBusLink> link;
    std::unique_ptr<Connection> connection;
    std::shared_ptr<Communication> proxy;
    std::atomic<int> interruptions = 0;
    std::atomic<int> invalidations = 0;
    std::atomic<int> errors = 0;
};

using OddServer = OddPeerTest;

/// A main app that keeps its answers for itself.
class Withholding final : public Communication, public ListenerDelegate {
  public:
    std::vector<MeetingsReply> withheld;
    int creations = 0;

    void openMeetingWithId(const std::string&) override {}

    void createNewMeeting() override { ++creations; }

    void fetchUpcomingMeetings(MeetingsReply reply) override { withheld.push_back(std::move(reply)); }

    void displaySyncing() override {}

    void displayNotSyncing() override {}

    bool listenerShouldAcceptNewConnection(Listener&, IncomingConnection& incoming) override {
        incoming.setExportedInterface(exportedCommunication(*this));
        return true;
    }
};

/// A listener of ours, for clients that break the rules.
class OddClient : public OddPeerTest {
  protected:
    OddClient() {
        listener->setDelegate(&served);
        listener->resume();
    }

    [[nodiscard]] Endpoint listening() const { return listener->endpoint().value(); }

    /// What the listener says to a client that opens with `opening`.
    std::string answerTo(const std::string& opening) {
        std::atomic<bool> answered = false;
        std::string answer;
        std::jthread client([&] {
            const Socket socket;
            EXPECT_TRUE(socket.connectTo(listening().socketName()));
            socket.say(std::string(1, '\0') + opening);
            answer = socket.hear();
            answered = true;
        });
        EXPECT_TRUE(ManualRunLoop::shared().waitUntil([&] { return answered.load(); }));
        return answer;
    }

    TemporaryDirectory runtimeFolder;
    EnvironmentVariable runtime{"XDG_RUNTIME_DIR", runtimeFolder.path().string()};
    Withholding served;
    DBusLink far;
    std::unique_ptr<Listener> listener = far.anonymousListener();
};

} // namespace

TEST_F(OddServer, ThatNeverAccepts) {
    const Socket listening;
    listening.listenAt(path, 0);
    const Socket first;
    ASSERT_TRUE(first.connectTo(path)) << "the queue is full from here on";
    countsAsNoConnection(endpoint);
}

TEST_F(OddServer, ThatAcceptsAndKeepsSilent) {
    const Socket listening;
    listening.listenAt(path, 8);
    countsAsNoConnection(endpoint);
}

TEST_F(OddServer, ThatHangsUpOrTalksNonsense) {
    const std::array<std::string, 4> openings{"", "REJECTED EXTERNAL\r\n", "OK\r\n",
                                              std::string(100000, 'x')};
    const Socket listening;
    listening.listenAt(path, 8);
    for (const std::string& opening : openings) {
        std::jthread server([&] {
            const Socket accepted = listening.next();
            (void)accepted.hear();
            accepted.say(opening);
        });
        countsAsNoConnection(endpoint);
    }
}

TEST_F(OddServer, ThatTalksNonsenseOnceWeAreIn) {
    const Socket listening;
    listening.listenAt(path, 8);
    std::jthread server([&] {
        const Socket accepted = listening.next();
        (void)accepted.hear();
        accepted.say("DATA\r\nOK 00000000000000000000000000000000\r\nAGREE_UNIX_FD\r\n" +
                     std::string(64, '\x7f'));
    });
    connect(endpoint, {});
    proxy->fetchUpcomingMeetings([](const auto&) { ADD_FAILURE() << "there is no answer"; });
    EXPECT_TRUE(ManualRunLoop::shared().waitUntil(
        [this] { return errors == 1 && interruptions + invalidations == 1; }));
}

TEST_F(OddServer, ThatIsNoSocket) {
    countsAsNoConnection(*Endpoint::ofSocketPath("/dev/null"));
    countsAsNoConnection(*Endpoint::ofSocketPath(folder.path().string()));
}

TEST_F(OddClient, GetsInOnlyThroughTheSystemsWord) {
    for (const char* opening : {"AUTH\r\n", "AUTH ANONYMOUS\r\n", "AUTH DBUS_COOKIE_SHA1 30\r\n"})
        EXPECT_THAT(answerTo(opening), StartsWith("REJECTED")) << opening;
    EXPECT_THAT(answerTo("AUTH EXTERNAL 3939393939\r\n"), Not(HasSubstr("OK"))) << "as user 99999";
}

TEST_F(OddClient, LeavesTheListenerToTheOthers) {
    std::vector<std::unique_ptr<Socket>> clients;
    for (int count = 0; count < 20; ++count) {
        clients.push_back(std::make_unique<Socket>());
        ASSERT_TRUE(clients.back()->connectTo(listening().socketName()));
        clients.back()->say(count % 2 ? std::string(10000, '\x7f') : std::string());
    }
    connect(listening(), {});
    proxy->createNewMeeting();
    EXPECT_TRUE(ManualRunLoop::shared().waitUntil([this] { return served.creations == 1; }));
    EXPECT_EQ(errors, 0);
}

TEST_F(OddClient, IsToldThatItsArgumentsAreWrong) {
    std::atomic<bool> done = false;
    std::string error;
    std::jthread client([&] {
        sd_bus* bus = nullptr;
        sd_bus_new(&bus);
        sd_bus_set_address(bus, listening().address().c_str());
        EXPECT_GE(sd_bus_start(bus), 0);
        sd_bus_error answer = SD_BUS_ERROR_NULL;
        EXPECT_LT(sd_bus_call_method(bus, nullptr, "/com/velloren/Communication",
                                     "com.velloren.Communication", "openMeetingWithId", &answer, nullptr, "u",
                                     7u),
                  0);
        error = answer.name ? answer.name : "";
        sd_bus_error_free(&answer);
        sd_bus_close_unref(bus);
        done = true;
    });
    EXPECT_TRUE(ManualRunLoop::shared().waitUntil([&] { return done.load(); }));
    EXPECT_EQ(error, "org.freedesktop.DBus.Error.InvalidArgs");
}

TEST_F(OddClient, MayGoBeforeItsAnswer) {
    connect(listening(), {});
    proxy->fetchUpcomingMeetings(nullptr);
    ASSERT_TRUE(ManualRunLoop::shared().waitUntil([this] { return served.withheld.size() == 1; }));
    disconnect();
    served.withheld.front()(std::nullopt);
    connect(listening(), {});
    proxy->createNewMeeting();
    EXPECT_TRUE(ManualRunLoop::shared().waitUntil([this] { return served.creations == 1; }));
}

TEST_F(OddClient, FailsACallThatIsNeverAnsweredAndGoesOn) {
    connect(listening(), {.callTimeout = 100ms});
    proxy->fetchUpcomingMeetings([](const auto&) { ADD_FAILURE() << "there is no answer"; });
    EXPECT_TRUE(ManualRunLoop::shared().waitUntil([this] { return errors == 1; }));
    served.withheld.front()(std::nullopt); // too late
    proxy->createNewMeeting();
    EXPECT_TRUE(ManualRunLoop::shared().waitUntil([this] { return served.creations == 1; }));
    EXPECT_EQ(interruptions + invalidations, 0);
}

TEST_F(OddClient, FailsTheCallsOnTheirWayWhenThePeerDies) {
    connect(listening(), {});
    for (int count = 0; count < 3; ++count)
        proxy->fetchUpcomingMeetings([](const auto&) { ADD_FAILURE() << "there is no answer"; });
    ASSERT_TRUE(ManualRunLoop::shared().waitUntil([this] { return served.withheld.size() == 3; }));
    listener.reset();
    EXPECT_TRUE(ManualRunLoop::shared().waitUntil([this] { return errors == 3 && interruptions == 1; }));
    EXPECT_EQ(invalidations, 0);
}

} // namespace velloren
