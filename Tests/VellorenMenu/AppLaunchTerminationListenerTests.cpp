#include "Platform/Foundation/SharedInstance.h"
#include "Tests/Support/FakeWorkspace.h"
#include "VellorenMenu/AppLaunchTerminationListener.h"

#include <gmock/gmock.h>

namespace velloren {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Change = RunningApplicationsChange;

class SeededListener final : public AppLaunchTerminationListener {
  public:
    using AppLaunchTerminationListener::launchedApps;
};

class Reports final : public AppLaunchTerminationListenerDelegate {
  public:
    std::vector<std::string> lines;

    void applicationDidLaunch(VApp app) override { lines.push_back("launch of " + app.bundleIdentifier()); }

    void applicationDidTerminate(VApp app) override { lines.push_back("end of " + app.bundleIdentifier()); }
};

class AppLaunchTerminationListenerTest : public ::testing::Test {
  protected:
    AppLaunchTerminationListenerTest() { listener.delegate = reports; }

    ~AppLaunchTerminationListenerTest() override { SharedInstance<Workspace>::reset(); }

    void insert(std::vector<RunningApplication> applications) {
        listener.observeValueForKeyPath(Change{Change::Insertion, std::move(applications), std::nullopt},
                                        &listener.kvoContext);
    }

    void remove(std::vector<RunningApplication> applications) {
        listener.observeValueForKeyPath(Change{Change::Removal, std::nullopt, std::move(applications)},
                                        &listener.kvoContext);
    }

    const std::string mainApp = VApp(VApp::main).bundleIdentifier();
    const std::string menuAgent = VApp(VApp::menu).bundleIdentifier();
    FakeWorkspace& workspace = FakeWorkspace::install();
    std::shared_ptr<Reports> reports = std::make_shared<Reports>();
    SeededListener listener;
};

} // namespace

TEST_F(AppLaunchTerminationListenerTest, ReportsEachChangeInTheCountOnce) {
    listener.launchedApps = {{VApp::main, 0}, {VApp::menu, 2}};
    workspace.instances = {{mainApp, 1}, {menuAgent, 1}};
    insert({{mainApp, ":1.1"}, {mainApp, ":1.1"}, {"", ":1.2"}, {"org.other", ":1.3"}});
    EXPECT_THAT(reports->lines, ElementsAre("launch of " + mainApp));
    remove({{menuAgent, ":1.4"}});
    workspace.instances[mainApp] = 0;
    remove({{mainApp, ":1.1"}});
    remove({{mainApp, ":1.1"}});
    EXPECT_THAT(reports->lines,
                ElementsAre("launch of " + mainApp, "end of " + menuAgent, "end of " + mainApp));
    EXPECT_EQ(listener.launchedApps[VApp::main], 0);
}

TEST_F(AppLaunchTerminationListenerTest, HasNothingToReportUntilItIsSeeded) {
    workspace.instances[mainApp] = 1;
    insert({{mainApp, ":1.1"}});
    EXPECT_THAT(reports->lines, IsEmpty());
    EXPECT_THAT(listener.launchedApps, IsEmpty());
}

TEST_F(AppLaunchTerminationListenerTest, CountsOnWithoutADelegate) {
    listener.launchedApps = {{VApp::main, 0}};
    workspace.instances[mainApp] = 1;
    reports.reset();
    insert({{mainApp, ":1.1"}});
    EXPECT_EQ(listener.launchedApps[VApp::main], 1);
}

TEST_F(AppLaunchTerminationListenerTest, IgnoresWhatIsNotItsOwnOrNoInsertionOrRemoval) {
    listener.launchedApps = {{VApp::main, 0}};
    workspace.instances[mainApp] = 1;
    const std::vector<RunningApplication> list{{mainApp, ":1.1"}};
    const std::int64_t another = 0;
    listener.observeValueForKeyPath(std::nullopt, &listener.kvoContext);
    listener.observeValueForKeyPath(Change{Change::Insertion, list, list}, &another);
    listener.observeValueForKeyPath(Change{Change::Setting, list, list}, &listener.kvoContext);
    listener.observeValueForKeyPath(Change{Change::Replacement, list, list}, &listener.kvoContext);
    listener.observeValueForKeyPath(Change{Change::Insertion, std::nullopt, list}, &listener.kvoContext);
    listener.observeValueForKeyPath(Change{Change::Removal, list, std::nullopt}, &listener.kvoContext);
    EXPECT_THAT(reports->lines, IsEmpty());
    EXPECT_EQ(workspace.queries, 0);
    listener.launchedApps = {{VApp::agent, 0}};
    insert({{VApp(VApp::agent).bundleIdentifier(), ":1.5"}});
    EXPECT_EQ(workspace.queries, 0) << "the registry is never counted";
}

} // namespace velloren
