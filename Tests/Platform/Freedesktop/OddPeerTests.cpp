#include "Tests/Platform/Freedesktop/LinkTest.h"
#include "Tests/Support/Socket.h"

#include <gmock/gmock.h>
#include <systemd/sd-bus.h>

#include <future>
#include <thread>

/// Peers that break the rules, on either end of the link: none of them may stall or end the process.
namespace velloren {

namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using ::testing::HasSubstr;
using ::testing::StartsWith;

/// A server of another make.
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
        listener = far->anonymousListener();
        listener->setDelegate(&mainApp);
        listener->resume();
        std::filesystem::rename(listener->endpoint().value().socketName(), path);
    }

    void getsEverythingInTheEnd() {
        proxy->createNewMeeting();
        EXPECT_TRUE(waitUntil([this] { return mainApp.requests.size() >= 2; }));
        EXPECT_EQ(std::exchange(mainApp.requests, {}), (std::vector<std::string>{"open first", "create"}));
        EXPECT_EQ(errors + invalidations, 0);
    }

    const std::string path = runtimeFolder / "peer.socket";
};

/// A client of another make, at a listener of ours.
class OddClient : public LinkTest {
  protected:
    /// What `client` brings back; it has a thread of its own, as it waits for what this one serves.
    static std::string answerTo(const std::function<std::string()>& client) {
        auto answer = std::async(std::launch::async, client);
        EXPECT_TRUE(waitUntil([&] { return answer.wait_for(0s) == std::future_status::ready; }));
        return answer.get();
    }

    const Endpoint endpoint = listener->endpoint().value();
};

} // namespace

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

TEST_F(OddClient, GetsInOnlyThroughTheSystemsWord) {
    const auto answerToOpening = [this](const std::string& opening) {
        return answerTo([this, opening] {
            const Socket socket;
            EXPECT_TRUE(socket.connectTo(endpoint.socketName()));
            socket.say(std::string(1, '\0') + opening);
            return socket.hear();
        });
    };
    for (const char* opening : {"AUTH\r\n", "AUTH ANONYMOUS\r\n", "AUTH DBUS_COOKIE_SHA1 30\r\n"})
        EXPECT_THAT(answerToOpening(opening), StartsWith("REJECTED")) << opening;
    EXPECT_THAT(answerToOpening("AUTH EXTERNAL 3939393939\r\n"), Not(HasSubstr("OK"))) << "as user 99999";
    EXPECT_THAT(answerToOpening("AUTH EXTERNAL\r\nDATA\r\n"), HasSubstr("OK")) << "as whom the system says";
}

TEST_F(OddClient, LeavesTheListenerToTheOthers) {
    connect(endpoint);
    proxy->fetchUpcomingMeetings(nullptr);
    ASSERT_TRUE(waitUntil([this] { return mainApp.questions.size() == 1; }));
    disconnect();
    mainApp.questions.front()(std::nullopt); // nobody is there to hear it
    std::array<Socket, 20> clients;
    for (std::size_t index = 0; index < clients.size(); ++index) {
        ASSERT_TRUE(clients[index].connectTo(endpoint.socketName()));
        clients[index].say(index % 2 ? std::string(10000, '\x7f') : std::string());
    }
    connect(endpoint);
    proxy->createNewMeeting();
    EXPECT_TRUE(waitUntil([this] { return mainApp.requests.size() == 1; }));
    EXPECT_EQ(errors, 0);
}

TEST_F(OddClient, IsToldThatItsArgumentsAreWrong) {
    for (const char* types : {"", "u", "ss"}) {
        EXPECT_EQ(answerTo([this, types] {
                      sd_bus* bus = nullptr;
                      sd_bus_new(&bus);
                      sd_bus_set_address(bus, endpoint.address().c_str());
                      EXPECT_GE(sd_bus_start(bus), 0);
                      sd_bus_error answer = SD_BUS_ERROR_NULL;
                      sd_bus_call_method(bus, nullptr, "/com/velloren/Communication",
                                         "com.velloren.Communication", "openMeetingWithId", &answer, nullptr,
                                         types, "7", "8");
                      std::string error = answer.name ? answer.name : "";
                      sd_bus_error_free(&answer);
                      sd_bus_close_unref(bus);
                      return error;
                  }),
                  "org.freedesktop.DBus.Error.InvalidArgs")
            << types;
    }
    EXPECT_TRUE(mainApp.requests.empty());
}

TEST_F(OddServer, MayNeverAnswerACallAndGoOn) {
    connect(listener->endpoint().value(), {.callTimeout = 100ms});
    fetchInVain();
    EXPECT_TRUE(waitUntil([this] { return errors == 1; }));
    mainApp.questions.front()(std::nullopt); // too late
    proxy->createNewMeeting();
    EXPECT_TRUE(waitUntil([this] { return mainApp.requests.size() == 1; }));
    EXPECT_EQ(interruptions + invalidations, 0);
}

TEST_F(OddServer, MayDieWithCallsOnTheirWay) {
    connect(listener->endpoint().value());
    for (int count = 0; count < 3; ++count)
        fetchInVain();
    ASSERT_TRUE(waitUntil([this] { return mainApp.questions.size() == 3; }));
    listener.reset();
    EXPECT_TRUE(waitUntil([this] { return errors == 3 && interruptions == 1; }));
    EXPECT_EQ(invalidations, 0);
}

} // namespace velloren
