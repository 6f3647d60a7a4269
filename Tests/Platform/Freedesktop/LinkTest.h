#pragma once

#include "Platform/Foundation/SharedInstance.h"
#include "Platform/Freedesktop/Bus/DBusLink.h"
#include "Shared/Communication.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/ManualRunLoop.h"
#include "Tests/Support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <atomic>

namespace velloren {

/// A main app that notes what it is asked, lets in whom it likes, and keeps the questions.
class ListeningMainApp final : public Communication, public ListenerDelegate {
  public:
    bool accepts = true;
    int refusals = 0;
    std::vector<std::string> requests;
    std::vector<MeetingsReply> questions;

    void openMeetingWithId(const std::string& id) override { requests.push_back("open " + id); }

    void createNewMeeting() override { requests.emplace_back("create"); }

    void fetchUpcomingMeetings(MeetingsReply reply) override { questions.push_back(std::move(reply)); }

    void displaySyncing() override { requests.emplace_back("syncing"); }

    void displayNotSyncing() override { requests.emplace_back("not syncing"); }

    bool listenerShouldAcceptNewConnection(Listener&, IncomingConnection& connection) override {
        connection.setExportedInterface(exportedCommunication(*this));
        refusals += accepts ? 0 : 1;
        return accepts;
    }
};

/// A main app that listens, and the near end of a connection that counts what happens to it.
class LinkTest : public ::testing::Test {
  protected:
    LinkTest() {
        SharedInstance<RunLoop>::provide([] { return std::make_unique<ManualRunLoop>(); });
        listener->setDelegate(&mainApp);
        listener->resume();
    }

    ~LinkTest() override {
        listener.reset();
        far.reset();
        SharedInstance<RunLoop>::reset();
    }

    void TearDown() override { disconnect(); }

    static bool waitUntil(const std::function<bool()>& condition) {
        return ManualRunLoop::shared().waitUntil(condition);
    }

    void disconnect() {
        proxy.reset();
        connection.reset();
        near.reset();
    }

    void connect(const Endpoint& endpoint, const DBusLink::Options& options = {}) {
        disconnect();
        near = std::make_unique<DBusLink>(options);
        connectThrough(*near, endpoint);
    }

    void connectThrough(Link& link, const Endpoint& endpoint) {
        interruptions = invalidations = errors = 0;
        connection = link.connectionToEndpoint(endpoint);
        connection->setRemoteObjectInterface(interface);
        connection->setInterruptionHandler([this] { ++interruptions; });
        connection->setInvalidationHandler([this] { ++invalidations; });
        proxy = std::dynamic_pointer_cast<Communication>(
            connection->remoteObjectProxyWithErrorHandler([this](const std::string& text) {
                latestError = text;
                ++errors;
            }));
        connection->resume();
    }

    void fetchInVain() {
        proxy->fetchUpcomingMeetings([](const auto&) { ADD_FAILURE() << "there is no answer"; });
    }

    ListeningMainApp mainApp;
    TemporaryDirectory runtimeFolder;
    EnvironmentVariable runtime{"XDG_RUNTIME_DIR", runtimeFolder.path().string()};
    std::unique_ptr<DBusLink> far = std::make_unique<DBusLink>();
    std::unique_ptr<Listener> listener = far->anonymousListener();

    RemoteInterface interface = communicationInterface();
    std::unique_ptr<DBusLink> near;
    std::unique_ptr<Connection> connection;
    std::shared_ptr<Communication> proxy;
    std::atomic<int> interruptions = 0;
    std::atomic<int> invalidations = 0;
    std::string latestError; ///< to be read once `errors` has counted it
    std::atomic<int> errors = 0;
};

} // namespace velloren
