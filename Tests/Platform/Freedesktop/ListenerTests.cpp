#include "Tests/Platform/Freedesktop/LinkTest.h"
#include "Tests/Support/Socket.h"

#include <ctime>
#include <sys/resource.h>

namespace velloren {

namespace {

using Listening = LinkTest;
using namespace std::chrono_literals;

std::chrono::nanoseconds processorTime() {
    timespec used{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec);
}

} // namespace

TEST_F(Listening, RestsWhileDescriptorsAreShortAndGoesOnAfterwards) {
    const Endpoint endpoint = listener->endpoint().value();
    connect(endpoint);
    proxy->createNewMeeting();
    ASSERT_TRUE(waitUntil([this] { return mainApp.requests.size() == 1; }));
    const Socket client;
    rlimit usual{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &usual), 0);
    const int next = dup(0);
    close(next);
    const rlimit none{rlim_t(next), usual.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    EXPECT_TRUE(client.connectTo(endpoint.socketName()));
    const auto start = std::chrono::steady_clock::now();
    const auto before = processorTime();
    EXPECT_TRUE(waitUntil([&] { return std::chrono::steady_clock::now() > start + 400ms; }));
    EXPECT_LT(processorTime() - before, 200ms) << "it was told again and again";
    setrlimit(RLIMIT_NOFILE, &usual);
    connect(endpoint);
    proxy->createNewMeeting();
    EXPECT_TRUE(waitUntil([this] { return mainApp.requests.size() == 2; }));
    EXPECT_EQ(errors, 0);
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

} // namespace velloren
