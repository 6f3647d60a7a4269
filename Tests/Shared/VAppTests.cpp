#include "Shared/VApp.h"
#include "Tests/Support/FakeWorkspace.h"
#include "Tests/Support/RecordingLogger.h"

#include <gtest/gtest.h>

namespace velloren {

namespace {

class VAppTest : public ::testing::Test {
  protected:
    ~VAppTest() override {
        SharedInstance<Workspace>::reset();
        SharedInstance<Logger>::reset();
    }

    FakeWorkspace& workspace = FakeWorkspace::install();
    RecordingLogger& log = RecordingLogger::install();
};

} // namespace

TEST_F(VAppTest, NamesTheProductsThreeProcesses) {
    EXPECT_EQ(VApp(VApp::main).bundleIdentifier(), "com.velloren.velloren-mac");
    EXPECT_EQ(VApp(VApp::menu).bundleIdentifier(), "com.velloren.velloren-mac.menu");
    EXPECT_EQ(VApp(VApp::agent).bundleIdentifier(), "com.velloren.velloren-mac.agent");
}

TEST_F(VAppTest, LaunchesWhatDoesNotRunOnceAndSaysSo) {
    for (const bool taken : {true, false}) {
        workspace.takesLaunches = taken;
        workspace.launches.clear();
        log.clear();
        EXPECT_TRUE(VApp(VApp::main).launchIfNotRunning()) << "a launch was asked for, taken or not";
        EXPECT_EQ(workspace.launches, std::vector<std::string>{"com.velloren.velloren-mac"});
        EXPECT_EQ(log.numberedLines(),
                  std::vector<std::string>{"info Shared/VApp:94 launchIfNotRunning() Launching "
                                           "com.velloren.velloren-mac, launched=" +
                                           std::string(taken ? "true" : "false")});
    }
    EXPECT_TRUE(VApp(VApp::menu).launchIfNotRunning());
    EXPECT_EQ(workspace.launches.back(), "com.velloren.velloren-mac.menu");
}

TEST_F(VAppTest, LeavesARunningApplicationAloneHoweverManyInstancesThereAre) {
    for (const int instances : {1, 2}) {
        workspace.instances["com.velloren.velloren-mac"] = instances;
        EXPECT_TRUE(VApp(VApp::main).isRunning());
        EXPECT_EQ(VApp(VApp::main).runningInstances().size(), std::size_t(instances));
        EXPECT_FALSE(VApp(VApp::main).launchIfNotRunning());
    }
    EXPECT_TRUE(workspace.launches.empty());
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(VAppTest, StopsTheProcessWhenAskedAboutInstancesOfTheAgent) {
    const auto message = "fatal error: Agent doesn't support this functionality. We need to re-architect XPC "
                         "solution, see .*: file Shared/VApp, line 83";
    EXPECT_DEATH((void)VApp(VApp::agent).runningInstances(), message);
    EXPECT_DEATH((void)VApp(VApp::agent).isRunning(), message);
    EXPECT_DEATH(VApp(VApp::agent).launchIfNotRunning(), message);
    EXPECT_EQ(workspace.queries, 0);
}

} // namespace velloren
