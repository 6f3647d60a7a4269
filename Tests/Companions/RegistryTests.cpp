#include "Companions/RegistryDaemon/Registry.h"
#include "Platform/Foundation/SharedInstance.h"
#include "Platform/Freedesktop/Bus/DBusLink.h"
#include "Tests/Support/ManualRunLoop.h"
#include "Tests/Support/PrivateBus.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <fstream>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace velloren {

namespace {

/// A socket that listens for as long as it lives; its file stays, as after a crash.
class Socket {
  public:
    explicit Socket(const std::filesystem::path& path) : descriptor(socket(AF_UNIX, SOCK_STREAM, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.string().copy(address.sun_path, sizeof address.sun_path - 1);
        EXPECT_EQ(bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(listen(descriptor, 1), 0);
    }

    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    ~Socket() { close(descriptor); }

  private:
    int descriptor;
};

class RegistryTest : public ::testing::Test {
  protected:
    bool store(const Endpoint& endpoint, const std::string& identifier) {
        bool stored = false;
        registry.registerListenerEndpoint(endpoint, identifier, [&](bool answer) { stored = answer; });
        return stored;
    }

    std::optional<Endpoint> retrieve(const std::string& identifier) {
        std::optional<Endpoint> endpoint;
        registry.retrieveListenerEndpoint(
            identifier, [&](std::optional<Endpoint> answer) { endpoint = std::move(answer); });
        return endpoint;
    }

    TemporaryDirectory folder;
    Endpoint endpoint = *Endpoint::ofSocketPath((folder.path() / "a.socket").string());
    Registry registry;
};

} // namespace

TEST_F(RegistryTest, KeepsTheLatestEndpointOfAnIdentifier) {
    const Socket first(folder.path() / "a.socket");
    const Socket second(folder.path() / "b.socket");
    const auto other = *Endpoint::ofSocketPath((folder.path() / "b.socket").string());
    EXPECT_FALSE(retrieve("app"));
    EXPECT_TRUE(store(endpoint, "app"));
    EXPECT_TRUE(store(other, "app"));
    EXPECT_EQ(retrieve("app"), other);
    EXPECT_FALSE(retrieve("app.other"));
    registry.removeListenerEndpoint("app");
    EXPECT_FALSE(retrieve("app"));
    registry.removeListenerEndpoint("app");
}

TEST_F(RegistryTest, ForgetsAnEndpointWhoseProcessCrashed) {
    {
        const Socket socket(folder.path() / "a.socket");
        EXPECT_TRUE(store(endpoint, "app"));
        EXPECT_TRUE(retrieve("app"));
    }
    EXPECT_FALSE(retrieve("app"));
    std::filesystem::remove(folder.path() / "a.socket");
    const Socket again(folder.path() / "a.socket");
    EXPECT_FALSE(retrieve("app")) << "whoever comes back registers again";
}

TEST_F(RegistryTest, KeepsAnEndpointThatIsMerelyBusy) {
    const Socket socket(folder.path() / "a.socket");
    store(endpoint, "app");
    for (int attempt = 0; attempt < 10; ++attempt)
        EXPECT_TRUE(retrieve("app")) << "its queue of connections is full, and it lives";
}

TEST_F(RegistryTest, IsBounded) {
    EXPECT_FALSE(store(endpoint, ""));
    EXPECT_FALSE(store(endpoint, std::string(Registry::longestIdentifier + 1, 'a')));
    for (std::size_t index = 0; index < Registry::mostEntries; ++index)
        EXPECT_TRUE(store(endpoint, std::to_string(index)));
    EXPECT_FALSE(store(endpoint, "one more"));
    EXPECT_TRUE(store(endpoint, "0")) << "a known identifier may still move";
}

TEST(RegistryDaemon, IsStartedByTheBusAndAnswersOverTheLink) {
    SharedInstance<RunLoop>::provide([] { return std::make_unique<ManualRunLoop>(); });
    auto& loop = ManualRunLoop::shared();
    PrivateBus bus;
    bus.addService("com.velloren.velloren-mac.agent", VELLOREN_AGENT);
    {
        const Socket socket(bus.folder() / "a.socket");
        const auto endpoint = *Endpoint::ofSocketPath((bus.folder() / "a.socket").string());
        DBusLink link;
        const auto connection = link.connectionToService("com.velloren.velloren-mac.agent");
        connection->setRemoteObjectInterface(endPointHandlingInterface());
        connection->resume();
        const auto registry = std::dynamic_pointer_cast<EndPointHandling>(connection->remoteObjectProxy());
        std::atomic<bool> stored = false;
        std::atomic<bool> found = false;
        std::atomic<bool> missing = false;
        registry->registerListenerEndpoint(endpoint, "app", [&](bool answer) { stored = answer; });
        registry->retrieveListenerEndpoint("app", [&](const auto& answer) { found = answer == endpoint; });
        registry->removeListenerEndpoint("app");
        registry->retrieveListenerEndpoint("app", [&](const auto& answer) { missing = !answer; });
        EXPECT_TRUE(loop.waitUntil([&] { return stored && found && missing; }));
    }
    SharedInstance<RunLoop>::reset();
}

TEST(RegistryDaemon, SaysThatThereIsNoSessionBus) {
    const TemporaryDirectory folder;
    Process daemon(
        {VELLOREN_AGENT},
        {{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"}, {"XDG_RUNTIME_DIR", folder.path()}},
        folder.path() / "output");
    EXPECT_EQ(daemon.wait(), 1);
    EXPECT_NE(daemon.output().find("velloren-agent: there is no session bus"), std::string::npos);
}

TEST(RegistryDaemon, EndsWithItsSession) {
    PrivateBus bus;
    Process daemon({VELLOREN_AGENT}, {}, bus.folder() / "output");
    bus.stop();
    EXPECT_NE(daemon.wait(), 128 + SIGKILL);
}

} // namespace velloren
