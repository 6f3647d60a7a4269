#pragma once

#include "Platform/Desktop/Application.h"
#include "Tests/Support/FakeDesktop.h"
#include "Tests/Support/FakeEnds.h"
#include "Tests/Support/FakeLink.h"
#include "Tests/Support/FakeServices.h"
#include "Tests/Support/FakeWorkspace.h"
#include "Tests/Support/ManualRunLoop.h"
#include "Tests/Support/QtTest.h"
#include "Tests/Support/RecordingLogger.h"

namespace velloren {

/// Everything around the agent's delegate and its views, each a fake that the test sets as it likes.
class AgentTest : public QtTest {
  protected:
    inline static const std::string mainApp = "com.velloren.velloren-mac";
    inline static const std::string menuAgent = "com.velloren.velloren-mac.menu";

    AgentTest() {
        SharedInstance<UserDefaults>::provide(
            [] { return std::make_unique<UserDefaults>(std::filesystem::path()); });
        link.serve("com.velloren.velloren-mac.agent", exportedEndPointHandling(registry));
        link.serve(endpoint.address(), exportedCommunication(mainAppObject));
    }

    ~AgentTest() override {
        reset<StatusBar, GlobalEvents, WindowServer, Workspace, UserDefaults, Crashlytics, UserManager,
              SyncManager, MeetingStore, Logger, RunLoop>();
    }

    /// The main app listens, and the registry knows where.
    void registerMainApp() { registry.endpoints.insert_or_assign(mainApp, endpoint); }

    /// The main app runs and listens; the workspace says so.
    void startMainApp() {
        registerMainApp();
        workspace.start(mainApp);
        loop.runPending();
    }

    /// A log line of the agent's delegate.
    static std::string info(const std::string& text) { return "info VellorenMenu/MenuAppDelegate " + text; }

    static std::string debug(const std::string& text) { return "debug VellorenMenu/MenuAppDelegate " + text; }

    ManualRunLoop& loop = ManualRunLoop::install();
    const Endpoint endpoint = *Endpoint::parse("unix:path=/run/user/1000/velloren/main.socket");
    FakeWorkspace& workspace = FakeWorkspace::install();
    RecordingLogger& log = RecordingLogger::install();
    FakeWindowServer& display = FakeWindowServer::install();
    FakeGlobalEvents& events = FakeGlobalEvents::install();
    FakeStatusBar& statusBar = FakeStatusBar::install();
    FakeMeetingStore& store = FakeMeetingStore::install();
    FakeCrashlytics& crashlytics = FakeCrashlytics::install();
    FakeSyncManager& sync = FakeSyncManager::install();
    FakeUserManager& users = FakeUserManager::install();
    FakeLink link; // outlives what the ends below keep of its connections
    TestRegistry registry;
    TestMainApp mainAppObject;
    Application application;

  private:
    template <class... Services>
    static void reset() {
        (SharedInstance<Services>::reset(), ...);
    }
};

} // namespace velloren
