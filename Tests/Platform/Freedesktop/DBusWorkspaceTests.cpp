#include "Platform/Freedesktop/Session/DBusWorkspace.h"
#include "Platform/Freedesktop/Session/SingleInstance.h"
#include "Tests/Platform/Freedesktop/QtBusTest.h"

#include <gmock/gmock.h>

namespace velloren {

namespace {

using ::testing::ElementsAre;

const std::string mainApp = "com.velloren.velloren-mac";

class DBusWorkspaceTest : public QtBusTest {
  protected:
    /// Notes what observers of `notice` are told.
    Subscription noting(Workspace::Notice notice, const std::string& what) {
        return workspace.addObserver(notice, [this, what](const Notification& notification) {
            notices.push_back(
                what + std::get<std::string>(notification.userInfo->at("NSApplicationBundleIdentifier")));
        });
    }

    [[nodiscard]] std::size_t running() { return workspace.runningApplications(mainApp).size(); }

    DBusWorkspace workspace{connection("near"), {mainApp}};
    std::vector<std::string> notices;
    Subscription launch = noting(Workspace::Notice::DidLaunchApplication, "launch of ");
    Subscription termination = noting(Workspace::Notice::DidTerminateApplication, "termination of ");
};

} // namespace

TEST_F(DBusWorkspaceTest, TellsOfEachOwnerOfTheNameAsLongAsTheObserverLikes) {
    const std::string launched = "launch of " + mainApp;
    const std::string terminated = "termination of " + mainApp;
    int calls = 0;
    std::optional<Subscription> once =
        workspace.addObserver(Workspace::Notice::DidLaunchApplication, [&](const Notification&) {
            ++calls;
            once.reset();
        });
    EXPECT_EQ(running(), 0u);
    EXPECT_FALSE(workspace.isRunning(mainApp));
    EXPECT_TRUE(announceRunning(connection("first"), mainApp));
    EXPECT_TRUE(waitUntil([&] { return notices.size() == 1; }));
    EXPECT_TRUE(announceRunning(connection("second"), mainApp));
    EXPECT_TRUE(announceRunning(connection("second"), "com.velloren.other"));
    EXPECT_EQ(running(), 2u) << "one that waits for the name runs as well";
    QDBusConnection::disconnectFromBus(QStringLiteral("first"));
    EXPECT_TRUE(waitUntil([&] { return notices.size() == 3 && running() == 1; }));
    EXPECT_THAT(notices, ElementsAre(launched, terminated, launched)) << "the name changed hands";
    EXPECT_TRUE(workspace.isRunning(mainApp));
    EXPECT_TRUE(DBusWorkspace(connection("later"), {mainApp}).isRunning(mainApp)) << "no notice told it";
    QDBusConnection::disconnectFromBus(QStringLiteral("second"));
    EXPECT_TRUE(waitUntil([&] { return notices.size() == 4 && running() == 0; }));
    EXPECT_EQ(notices.back(), terminated);
    EXPECT_FALSE(workspace.isRunning(mainApp));
    EXPECT_EQ(calls, 1);
}

TEST_F(DBusWorkspaceTest, LaunchesWhatTheBusCanStartAndKnowsNothingOnceTheBusHasGone) {
    EXPECT_FALSE(workspace.launchApplication(mainApp));
    const std::string mark = bus.folder() / "started";
    bus.addService(mainApp, "/usr/bin/touch " + mark);
    EXPECT_TRUE(waitUntil([&] { return workspace.launchApplication(mainApp); }));
    EXPECT_TRUE(waitUntil([&] { return std::filesystem::exists(mark); }));
    EXPECT_TRUE(notices.empty()) << "it ended without ever taking its name";
    announceRunning(connection("first"), mainApp);
    EXPECT_TRUE(waitUntil([&] { return notices.size() == 1; }));
    bus.stop();
    EXPECT_TRUE(workspace.isRunning(mainApp)) << "it was told, and asks nobody";
    EXPECT_EQ(running(), 0u);
    EXPECT_FALSE(workspace.launchApplication(mainApp));
}

} // namespace velloren
