#include "Shared/VApp.h"
#include "Tests/Support/FakeWorkspace.h"
#include "Tests/Support/RecordingLogger.h"

#include <gmock/gmock.h>

namespace velloren {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class VAppTest : public ::testing::Test {
  protected:
    ~VAppTest() override {
        SharedInstance<Workspace>::reset();
        SharedInstance<Logger>::reset();
    }

    const std::string mainApp = "com.velloren.velloren-mac";
    FakeWorkspace& workspace = FakeWorkspace::install();
    RecordingLogger& log = RecordingLogger::install();
};

} // namespace

TEST_F(VAppTest, LaunchesWhatDoesNotRunAndSaysSo) {
    EXPECT_TRUE(VApp(VApp::main).launchIfNotRunning());
    workspace.takesLaunches = false;
    EXPECT_TRUE(VApp(VApp::menu).launchIfNotRunning()) << "a launch was asked for, taken or not";
    EXPECT_THAT(workspace.launches, ElementsAre(mainApp, mainApp + ".menu"));
    const std::string launching = "info Shared/VApp:94 launchIfNotRunning() Launching " + mainApp;
    EXPECT_THAT(log.numberedLines,
                ElementsAre(launching + ", launched=true", launching + ".menu, launched=false"));
}

TEST_F(VAppTest, LeavesARunningApplicationAloneHoweverManyInstancesThereAre) {
    for (const int instances : {1, 2}) {
        workspace.instances[mainApp] = instances;
        EXPECT_EQ(VApp(VApp::main).runningInstances().size(), std::size_t(instances));
        EXPECT_FALSE(VApp(VApp::main).launchIfNotRunning());
    }
    EXPECT_EQ(workspace.queries, 4) << "a launch asks: the notice of an end may still be under way";
    EXPECT_THAT(workspace.launches, IsEmpty());
    EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(VAppTest, StopsTheProcessWhenAskedAboutInstancesOfTheAgent) {
    const auto message = "fatal error: Agent doesn't support this functionality. We need to re-architect XPC "
                         "solution, see .*: file Shared/VApp, line 83";
    EXPECT_DEATH((void)VApp(VApp::agent).runningInstances(), message);
    EXPECT_DEATH(VApp(VApp::agent).launchIfNotRunning(), message);
}

} // namespace velloren
