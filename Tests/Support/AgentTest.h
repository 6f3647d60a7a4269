#pragma once

#include "Platform/Desktop/Application.h"
#include "Platform/Foundation/UserDefaults.h"
#include "Tests/Support/FakeDesktop.h"
#include "Tests/Support/FakeEnds.h"
#include "Tests/Support/FakeLink.h"
#include "Tests/Support/FakeServices.h"
#include "Tests/Support/FakeWorkspace.h"
#include "Tests/Support/ManualRunLoop.h"
#include "Tests/Support/QtTest.h"
#include "Tests/Support/RecordingLogger.h"

#include <string>

namespace velloren {

/// Everything around the agent's delegate and its views, each a fake that the test sets as it likes.
class AgentTest : public QtTest {
  protected:
    inline static const std::string mainApp = "com.velloren.velloren-mac";
    inline static const std::string menuAgent = "com.velloren.velloren-mac.menu";

    AgentTest() {
        SharedInstance<RunLoop>::provide([] { return std::make_unique<ManualRunLoop>(); });
        SharedInstance<UserDefaults>::provide(
            [] { return std::make_unique<UserDefaults>(std::filesystem::path()); });
        link.serve("com.velloren.velloren-mac.agent", exportedEndPointHandling(registry));
        link.serve(endpoint, exportedCommunication(mainAppObject));
    }

    ~AgentTest() override {
        SharedInstance<StatusBar>::reset();
        SharedInstance<GlobalEvents>::reset();
        SharedInstance<WindowServer>::reset();
        SharedInstance<Workspace>::reset();
        SharedInstance<UserDefaults>::reset();
        SharedInstance<Crashlytics>::reset();
        SharedInstance<UserManager>::reset();
        SharedInstance<SyncManager>::reset();
        SharedInstance<MeetingStore>::reset();
        SharedInstance<Logger>::reset();
        SharedInstance<RunLoop>::reset();
    }

    static ManualRunLoop& loop() { return ManualRunLoop::shared(); }

    /// The main app runs and listens; the workspace says so.
    void startMainApp() {
        registry.endpoints.insert_or_assign(mainApp, endpoint);
        workspace.start(mainApp);
        loop().runPending();
    }

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
};

} // namespace velloren
