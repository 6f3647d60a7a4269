#include "Companions/RegistryDaemon/Registry.h"
#include "Platform/Link/DBus/DBusLink.h"
#include "Tests/Support/ManualRunLoop.h"
#include "Tests/Support/PrivateBus.h"
#include "Tests/Support/Socket.h"

#include <gmock/gmock.h>
#include <systemd/sd-bus.h>

namespace velloren {

namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::Optional;

/// Who calls, and who has which name, as the test says.
class SomeProcesses final : public Processes {
  public:
    std::map<std::string, std::vector<pid_t>> instances;
    std::optional<pid_t> calling = 1;

    std::vector<pid_t> instancesOf(const std::string& identifier) override { return instances[identifier]; }

    std::optional<pid_t> caller() override { return calling; }
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
        registry.retrieveListenerEndpoint(identifier, [&](const auto& answer) { endpoint = answer; });
        return endpoint;
    }

    TemporaryDirectory folder;
    std::optional<Socket> socket{std::in_place, folder / "a.socket", 1};
    const Socket otherSocket{folder / "b.socket", 1};
    const Endpoint endpoint = *Endpoint::ofSocketPath((folder / "a.socket").string());
    const Endpoint other = *Endpoint::ofSocketPath((folder / "b.socket").string());
    SomeProcesses processes;
    Registry registry{processes};
};

} // namespace

TEST_F(RegistryTest, ForgetsAnEndpointOnceItsProcessCrashedAndNotBefore) {
    EXPECT_FALSE(store(endpoint, ""));
    EXPECT_TRUE(store(endpoint, "app"));
    for (int attempt = 0; attempt < 10; ++attempt)
        EXPECT_TRUE(retrieve("app")) << "its queue of connections is full, and it lives";
    EXPECT_FALSE(retrieve("app.other"));
    socket.reset();
    EXPECT_FALSE(retrieve("app"));
    std::filesystem::remove(folder / "a.socket");
    socket.emplace(folder / "a.socket", 1);
    EXPECT_FALSE(retrieve("app")) << "whoever comes back registers again";
}

TEST_F(RegistryTest, ListensToTheInstancesOfAnIdentifierAlone) {
    EXPECT_TRUE(store(endpoint, "app"));
    EXPECT_TRUE(store(other, "app")) << "nobody has the name yet";
    processes.instances["app"] = {7, 8};
    EXPECT_EQ(retrieve("app"), other);
    for (const std::optional<pid_t> stranger : {std::optional<pid_t>(), std::optional<pid_t>(9)}) {
        processes.calling = stranger;
        EXPECT_FALSE(store(endpoint, "app"));
        registry.removeListenerEndpoint("app");
        EXPECT_EQ(retrieve("app"), other);
    }
    processes.calling = 7;
    EXPECT_TRUE(store(endpoint, "app"));
    EXPECT_EQ(retrieve("app"), endpoint);
    processes.calling = 8;
    EXPECT_TRUE(store(other, "app")) << "it waits for its turn";
    EXPECT_EQ(retrieve("app"), endpoint);
    processes.instances["app"] = {8};
    EXPECT_EQ(retrieve("app"), other);
    registry.removeListenerEndpoint("app");
    EXPECT_FALSE(retrieve("app"));
}

TEST(RegistryDaemon, KnowsWhoCallsFromTheBus) {
    const std::string name = "com.velloren.velloren-mac";
    PrivateBus bus;
    bus.addService(name + ".agent", VELLOREN_AGENT);
    const Socket socket(bus.folder() / "a.socket", 8);
    const auto endpoint = Endpoint::ofSocketPath((bus.folder() / "a.socket").string())->address();
    sd_bus* owner = nullptr;
    ASSERT_GE(sd_bus_open_user(&owner), 0);
    ASSERT_GE(sd_bus_request_name(owner, name.c_str(), 0), 0);
    ASSERT_GE(sd_bus_call_method(owner, (name + ".agent").c_str(), "/com/velloren/EndPointHandling",
                                 "com.velloren.EndPointHandling", "registerListenerEndpoint", nullptr,
                                 nullptr, "ss", endpoint.c_str(), name.c_str()),
              0);
    const auto answerToAnother = [&](const std::string& method, const std::vector<std::string>& arguments) {
        return bus.call(name + ".agent", "/com/velloren/EndPointHandling",
                        "com.velloren.EndPointHandling." + method, arguments);
    };
    EXPECT_THAT(answerToAnother("registerListenerEndpoint", {"string:unix:path=/tmp/x", "string:" + name}),
                Optional(HasSubstr("boolean false")));
    EXPECT_TRUE(answerToAnother("removeListenerEndpoint", {"string:" + name}));
    EXPECT_THAT(answerToAnother("retrieveListenerEndpoint", {"string:" + name}),
                Optional(HasSubstr(endpoint)));
    sd_bus_flush_close_unref(owner);

    ManualRunLoop::install();
    {
        DBusLink ending;
        const auto connection = ending.connectionToService(name + ".agent");
        connection->setRemoteObjectInterface(endPointHandlingInterface());
        connection->resume();
        std::dynamic_pointer_cast<EndPointHandling>(connection->remoteObjectProxy())
            ->removeListenerEndpoint(name);
    }
    SharedInstance<RunLoop>::reset();
    EXPECT_THAT(answerToAnother("retrieveListenerEndpoint", {"string:" + name}),
                Optional(Not(HasSubstr(endpoint))))
        << "what was sent last gets there though its process ends";
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
    EXPECT_THAT(late.output(), HasSubstr("velloren-agent: there is no session bus"));
}

} // namespace velloren
