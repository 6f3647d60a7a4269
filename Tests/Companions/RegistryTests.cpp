#include "Companions/RegistryDaemon/Registry.h"
#include "Tests/Support/ManualRunLoop.h"
#include "Tests/Support/PrivateBus.h"
#include "Tests/Support/Socket.h"

namespace velloren {

namespace {

class RegistryTest : public ::testing::Test {
  protected:
    bool store(const Endpoint& endpoint, const std::string& identifier) {
        bool stored = false;
        registry.registerListenerEndpoint(endpoint, identifier, [&](bool answer) { stored = answer; });
        return stored;
    }

    std::optional<Endpoint> retrieve(const std::string& identifier) {
        std::optional<Endpoint> endpoint;
        registry.retrieveListenerEndpoint(identifier, [&](const auto& answer) { endpoint = answer; });
        return endpoint;
    }

    TemporaryDirectory folder;
    const std::string path = folder / "a.socket";
    const Endpoint endpoint = *Endpoint::ofSocketPath(path);
    Registry registry;
};

} // namespace

TEST_F(RegistryTest, KeepsTheLatestEndpointOfAnIdentifier) {
    const Socket first(path, 1);
    const Socket second(folder / "b.socket", 1);
    const auto other = *Endpoint::ofSocketPath((folder / "b.socket").string());
    EXPECT_FALSE(retrieve("app"));
    EXPECT_TRUE(store(endpoint, "app"));
    EXPECT_TRUE(store(other, "app"));
    EXPECT_EQ(retrieve("app"), other);
    EXPECT_FALSE(retrieve("app.other"));
    registry.removeListenerEndpoint("app");
    EXPECT_FALSE(retrieve("app"));
    registry.removeListenerEndpoint("app");
}

TEST_F(RegistryTest, ForgetsAnEndpointOnceItsProcessCrashedAndNotBefore) {
    {
        const Socket socket(path, 1);
        EXPECT_TRUE(store(endpoint, "app"));
        for (int attempt = 0; attempt < 10; ++attempt)
            EXPECT_TRUE(retrieve("app")) << "its queue of connections is full, and it lives";
    }
    EXPECT_FALSE(retrieve("app"));
    std::filesystem::remove(path);
    const Socket again(path, 1);
    EXPECT_FALSE(retrieve("app")) << "whoever comes back registers again";
}

TEST_F(RegistryTest, IsBounded) {
    EXPECT_FALSE(store(endpoint, ""));
    EXPECT_FALSE(store(endpoint, std::string(Registry::longestIdentifier + 1, 'a')));
    for (std::size_t index = 0; index < Registry::mostEntries; ++index)
        EXPECT_TRUE(store(endpoint, std::to_string(index)));
    EXPECT_FALSE(store(endpoint, "one more"));
    EXPECT_TRUE(store(endpoint, "0")) << "a known identifier may still move";
}

TEST(RegistryDaemon, EndsWithItsSessionAndSaysWhenThereIsNone) {
    PrivateBus bus;
    const auto log = bus.folder() / "output";
    Process daemon({VELLOREN_AGENT}, {}, log);
    ASSERT_TRUE(ManualRunLoop().waitUntil([&] { return bus.hasOwner("com.velloren.velloren-mac.agent"); }));
    bus.stop();
    EXPECT_EQ(daemon.wait(), 0);
    EXPECT_EQ(daemon.output(), "");
    Process late({VELLOREN_AGENT}, {}, log);
    EXPECT_EQ(late.wait(), 1);
    EXPECT_NE(late.output().find("velloren-agent: there is no session bus"), std::string::npos);
}

} // namespace velloren
