#include "Tests/Support/FakeWorkspace.h"
#include "VellorenMenu/AppLaunchTerminationListener.h"

#include <gmock/gmock.h>

namespace velloren {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Applications = std::vector<RunningApplication>;
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

    void observe(const Change& change) { listener.observeValueForKeyPath(change, &listener.kvoContext); }

    void insert(const Applications& list) { observe({Change::Insertion, list, std::nullopt}); }

    void remove(const Applications& list) { observe({Change::Removal, std::nullopt, list}); }

    const std::string mainApp = VApp(VApp::main).bundleIdentifier();
    const std::string menuAgent = VApp(VApp::menu).bundleIdentifier();
    const Applications list{{mainApp, ":1.1"}};
    FakeWorkspace& workspace = FakeWorkspace::install();
    std::shared_ptr<Reports> reports = std::make_shared<Reports>();
    SeededListener listener;
};

} // namespace

TEST_F(AppLaunchTerminationListenerTest, ReportsEachChangeInTheCountOfWhatItIsSeededWithOnce) {
    workspace.instances = {{mainApp, 1}, {menuAgent, 1}};
    insert(list);
    EXPECT_THAT(listener.launchedApps, IsEmpty());
    listener.launchedApps = {{VApp::main, 0}, {VApp::menu, 2}};
    insert({{mainApp, ":1.1"}, {mainApp, ":1.1"}, {"", ":1.2"}, {"org.other", ":1.3"}});
    EXPECT_THAT(reports->lines, ElementsAre("launch of " + mainApp));
    remove({{menuAgent, ":1.4"}});
    workspace.instances[mainApp] = 0;
    remove(list);
    remove(list);
    EXPECT_THAT(reports->lines,
                ElementsAre("launch of " + mainApp, "end of " + menuAgent, "end of " + mainApp));
    reports.reset();
    workspace.instances[mainApp] = 1;
    insert(list);
    EXPECT_EQ(listener.launchedApps[VApp::main], 1) << "counted though nobody is told";
}

TEST_F(AppLaunchTerminationListenerTest, IgnoresWhatIsNotItsOwnOrNoInsertionOrRemoval) {
    listener.launchedApps = {{VApp::main, 0}, {VApp::agent, 0}};
    const std::int64_t another = 0;
    listener.observeValueForKeyPath(std::nullopt, &listener.kvoContext);
    listener.observeValueForKeyPath(Change{Change::Insertion, list, list}, &another);
    observe({Change::Setting, list, list});
    observe({Change::Replacement, list, list});
    observe({Change::Insertion, std::nullopt, list});
    observe({Change::Removal, list, std::nullopt});
    insert({{VApp(VApp::agent).bundleIdentifier(), ":1.5"}});
    EXPECT_EQ(workspace.queries, 0);
    const auto message = "fatal error: Agent doesn't support this functionality. We need to re-architect XPC "
                         "solution, see .*: file Shared/VApp, line 83";
    EXPECT_DEATH((void)VApp(VApp::agent).runningInstances(), message) << "the registry is never counted";
    EXPECT_DEATH(VApp(VApp::agent).launchIfNotRunning(), message);
}

} // namespace velloren
