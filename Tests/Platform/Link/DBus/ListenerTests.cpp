#include "Tests/Platform/Link/DBus/LinkTest.h"
#include "Tests/Support/Process.h"
#include "Tests/Support/ProcessFigures.h"
#include "Tests/Support/Socket.h"

#include <gmock/gmock.h>

#include <future>
#include <sys/resource.h>

namespace velloren {

namespace {

using namespace std::chrono_literals;
using ::testing::HasSubstr;
using ::testing::StartsWith;

/// A client of another make.
class OddClient : public LinkTest {
  protected:
    /// What `client` brings back; it has a thread of its own, as it waits for what this one serves.
    std::string answerTo(const std::function<std::string()>& client) {
        auto answer = std::async(std::launch::async, client);
        EXPECT_TRUE(waitUntil([&] { return answer.wait_for(0s) == std::future_status::ready; }));
        return answer.get();
    }
};

using Listening = OddClient;

} // namespace

TEST_F(Listening, IsDoneOnlyInAPrivateRuntimeDirectoryAndTidiedUp) {
    const std::string path = endpoint().socketName();
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
    std::filesystem::permissions(product, std::filesystem::perms(0755));
    ::testing::internal::CaptureStderr();
    EXPECT_TRUE(listensIn(folder.path()));
    EXPECT_THAT(::testing::internal::GetCapturedStderr(), HasSubstr("was open to others"));
    EXPECT_EQ(std::filesystem::status(product).permissions(), std::filesystem::perms::owner_all);
    std::filesystem::rename(product, folder / "elsewhere");
    std::filesystem::create_directory_symlink(folder / "elsewhere", product);
    EXPECT_FALSE(listensIn(folder.path())) << "somebody else may have said where it leads";
    std::filesystem::create_directory(folder / std::string(120, 'd'));
    EXPECT_FALSE(listensIn(folder / std::string(120, 'd'))) << "no socket has so long a name";
    EXPECT_FALSE(listensIn(std::nullopt));
    EXPECT_FALSE(listensIn("/nonexistent"));
}

TEST_F(Listening, RestsWhileDescriptorsAreShortAndGoesOnAfterwards) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizer's own checks need descriptors";
#endif
    const Socket client;
    ASSERT_TRUE(client.connectTo(endpoint().socketName()));
    mainApp.accepts = false;
    rlimit usual{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &usual), 0);
    const int next = dup(0);
    close(next);
    const rlimit none{rlim_t(next), usual.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    loop.readWatched();
    setrlimit(RLIMIT_NOFILE, &usual);
    loop.readWatched();
    EXPECT_EQ(mainApp.refusals, 0) << "it would have been told again and again";
    EXPECT_TRUE(waitUntil([this] { return mainApp.refusals == 1; }));
}

TEST_F(Listening, LetsInNobodyOfAnotherUser) {
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can be another user for a moment";
    for (const auto& folder : {runtimeFolder.path(), runtimeFolder / "velloren"})
        std::filesystem::permissions(folder, std::filesystem::perms::all);
    const std::string path = endpoint().socketName();
    std::filesystem::permissions(path, std::filesystem::perms::all);
    const Socket stranger;
    ASSERT_EQ(seteuid(65534), 0);
    const bool connected = stranger.connectTo(path);
    ASSERT_EQ(seteuid(0), 0);
    ASSERT_TRUE(connected);
    stranger.say(std::string(1, '\0') + "AUTH EXTERNAL\r\nDATA\r\n");
    EXPECT_EQ(answerTo([&] { return stranger.hear(); }), "") << "hung up on";
}

TEST_F(Listening, SweepsWhatKilledProcessesLeftAndNothingElse) {
    const auto folder = runtimeFolder / "velloren";
    const Socket living(folder / "endpoint-1-1.socket", 0);
    const Socket client;
    ASSERT_TRUE(client.connectTo(folder / "endpoint-1-1.socket")) << "too busy for one more from here on";
    for (const char* name : {"endpoint-1-2.socket", "endpoint-1-3.socket", "foreign.socket"})
        const Socket gone(folder / name, 1);
    std::filesystem::create_directory(folder / "endpoint-folder.socket");
    std::filesystem::create_symlink("/dev/null", folder / "endpoint-link.socket");
    const auto another = far->anonymousListener();
    another->resume();
    for (const char* name : {"endpoint-1-2.socket", "endpoint-1-3.socket"})
        EXPECT_TRUE(waitUntil([&] { return !std::filesystem::exists(folder / name); })) << name;
    for (const char* name : {"endpoint-1-1.socket", "foreign.socket", "endpoint-folder.socket"})
        EXPECT_TRUE(std::filesystem::exists(folder / name)) << name;
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "endpoint-link.socket"));
}

TEST_F(OddClient, GetsInOnlyThroughTheSystemsWord) {
    const auto answerToOpening = [this](const std::string& opening) {
        return answerTo([this, opening] {
            const Socket socket;
            EXPECT_TRUE(socket.connectTo(endpoint().socketName()));
            socket.say(std::string(1, '\0') + opening);
            return socket.hear();
        });
    };
    for (const char* opening : {"AUTH\r\n", "AUTH ANONYMOUS\r\n", "AUTH DBUS_COOKIE_SHA1 30\r\n"})
        EXPECT_THAT(answerToOpening(opening), StartsWith("REJECTED")) << opening;
    EXPECT_THAT(answerToOpening("AUTH EXTERNAL 3939393939\r\n"), Not(HasSubstr("OK"))) << "as user 99999";
    EXPECT_THAT(answerToOpening("AUTH EXTERNAL\r\nDATA\r\n"), HasSubstr("OK")) << "as whom the system says";
}

TEST_F(OddClient, LeavesTheListenerToTheOthersAndNothingInIt) {
    connect(endpoint());
    proxy->fetchUpcomingMeetings(nullptr);
    ASSERT_TRUE(waitUntil([this] { return mainApp.withheld.size() == 1; }));
    disconnect();
    mainApp.withheld.front()(std::nullopt); // nobody is there to hear it
    const auto descriptors = descriptorsOf(getpid());
    {
        const std::array<Socket, 200> storm;
        for (const Socket& client : storm) {
            ASSERT_TRUE(client.connectTo(endpoint().socketName()));
            const std::string words[] = {"", std::string(1, '\0') + "AUTH EXTERNAL\r\nDATA\r\nBEGIN\r\n",
                                         std::string(10000, '\x7f')};
            client.say(words[(&client - storm.data()) % 3]);
            loop.readWatched();
        }
        connect(endpoint());
        create();
        EXPECT_TRUE(waitUntil([this] { return mainApp.requests.size() == 2; }));
        EXPECT_EQ(errors, 0);
    }
    disconnect();
    EXPECT_TRUE(waitUntil([&] { return descriptorsOf(getpid()) <= descriptors; }));
}

TEST_F(OddClient, MayCallInTheSameBreathAsItBegins) {
    const auto field = [](char code, char type, std::string text) {
        text += std::string(8 - text.size() % 8, '\0');
        return std::string{code, 1, type, 0, char(text.find('\0')), 0, 0, 0} + text;
    };
    const std::string fields = field(1, 'o', "/com/velloren/Communication") +
                               field(2, 's', "com.velloren.Communication") +
                               field(3, 's', "createNewMeeting");
    const std::string call{'l', 1, 1, 1, 0, 0, 0, 0, 1, 0, 0, 0, char(fields.size() - 7), 0, 0, 0};
    const Socket socket;
    answerTo([&] {
        EXPECT_TRUE(socket.connectTo(endpoint().socketName()));
        socket.say(std::string(1, '\0') + "AUTH EXTERNAL\r\nDATA\r\n");
        return socket.hear();
    });
    socket.say("BEGIN\r\n" + call + fields);
    EXPECT_TRUE(waitUntil([this] { return mainApp.requests.size() == 1; }));
}

TEST_F(OddClient, IsToldThatItsArgumentsAreWrong) {
    const std::vector<std::string> wrong[] = {{}, {"uint32:7"}, {"string:7", "string:8"}};
    for (const auto& arguments : wrong) {
        std::vector<std::string> command{"dbus-send", "--peer=" + endpoint().address(), "--print-reply",
                                         "/com/velloren/Communication",
                                         "com.velloren.Communication.openMeetingWithId"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        Process client(command, {}, runtimeFolder / "answer");
        EXPECT_TRUE(waitUntil([&] { return !client.isRunning(); }));
        EXPECT_THAT(client.output(), HasSubstr("org.freedesktop.DBus.Error.InvalidArgs"));
        std::filesystem::remove(runtimeFolder / "answer");
    }
    EXPECT_TRUE(mainApp.requests.empty());
}

} // namespace velloren
