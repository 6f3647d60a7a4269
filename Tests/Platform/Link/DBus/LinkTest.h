#pragma once

#include "Platform/Link/DBus/DBusLink.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/FakeEnds.h"
#include "Tests/Support/ManualRunLoop.h"
#include "Tests/Support/TemporaryDirectory.h"

#include <gtest/gtest.h>

namespace velloren {

/// A main app that lets in whom it likes, and keeps the questions.
class ListeningMainApp final : public TestMainApp, public ListenerDelegate {
  public:
    bool accepts = true;
    int refusals = 0;

    ListeningMainApp() { withholds = true; }

    bool listenerShouldAcceptNewConnection(Listener&, IncomingConnection& connection) override {
        connection.setExportedInterface(exportedCommunication(*this));
        refusals += accepts ? 0 : 1;
        return accepts;
    }
};

/// A main app that listens, and the near end of a connection that counts what happens to it.
class LinkTest : public ::testing::Test {
  protected:
    LinkTest() { listen(); }

    ~LinkTest() override {
        listener.reset();
        far.reset();
        SharedInstance<RunLoop>::reset();
    }

    void TearDown() override { disconnect(); }

    /// Virtual time passes meanwhile, for those who try again.
    bool waitUntil(const std::function<bool()>& condition) {
        return loop.waitUntil([&] {
            loop.advance(RunLoop::Seconds(0.1));
            return condition();
        });
    }

    /// The main app listens at a fresh endpoint.
    void listen() {
        listener = far->anonymousListener();
        listener->setDelegate(&mainApp);
        listener->resume();
    }

    /// Where it listens.
    [[nodiscard]] Endpoint endpoint() const { return listener->endpoint().value(); }

    void connect(const Endpoint& endpoint, const DBusLink::Options& options = {}) {
        disconnect();
        near = std::make_unique<DBusLink>(options);
        use(near->connectionToEndpoint(endpoint));
    }

    /// From now on it is this connection that is counted, and that `proxy` belongs to.
    void use(std::shared_ptr<Connection> next) {
        interruptions = invalidations = errors = 0;
        connection = std::move(next);
        connection->setRemoteObjectInterface(interface);
        connection->setInterruptionHandler([this] { ++interruptions; });
        connection->setInvalidationHandler([this] { ++invalidations; });
        proxy = std::dynamic_pointer_cast<Communication>(
            connection->remoteObjectProxyWithErrorHandler([this](const std::string&) { ++errors; }));
        connection->resume();
    }

    void disconnect() {
        proxy.reset();
        connection.reset();
        near.reset();
    }

    void open(const std::string& id) {
        proxy->openMeetingWithId(id, [this, id] { returned.push_back("open " + id); });
    }

    void create() {
        proxy->createNewMeeting([this] { returned.emplace_back("create"); });
    }

    void fetchInVain() {
        proxy->fetchUpcomingMeetings([](const auto&) { ADD_FAILURE() << "there is no answer"; });
    }

    ManualRunLoop& loop = ManualRunLoop::install();
    ListeningMainApp mainApp;
    TemporaryDirectory runtimeFolder;
    EnvironmentVariable runtime{"XDG_RUNTIME_DIR", runtimeFolder.path().string()};
    std::unique_ptr<DBusLink> far = std::make_unique<DBusLink>();
    std::unique_ptr<Listener> listener;

    RemoteInterface interface = communicationInterface();
    std::unique_ptr<DBusLink> near;
    std::shared_ptr<Connection> connection;
    std::shared_ptr<Communication> proxy;
    std::vector<std::string> returned; ///< the requests that were given back
    int interruptions = 0;
    int invalidations = 0;
    int errors = 0;
};

} // namespace velloren
