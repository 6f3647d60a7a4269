#include "Platform/Freedesktop/Session/DBusWorkspace.h"
#include "Tests/Support/PrivateBus.h"
#include "Tests/Support/QtTest.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <gmock/gmock.h>

namespace velloren {

namespace {

using ::testing::ElementsAre;

const std::string mainApp = "com.velloren.velloren-mac";

class DBusWorkspaceTest : public QtTest {
  protected:
    ~DBusWorkspaceTest() override {
        launch = Subscription();
        termination = Subscription();
        workspace.reset();
        for (const char* name : {"near", "first", "second"})
            QDBusConnection::disconnectFromBus(QString::fromLatin1(name));
    }

    QDBusConnection connection(const char* name) {
        return QDBusConnection::connectToBus(QString::fromStdString(bus.address()),
                                             QString::fromLatin1(name));
    }

    /// Notes what observers of `notice` are told.
    Subscription noting(Workspace::Notice notice, const std::string& what) {
        return workspace->addObserver(notice, [this, what](const Notification& notification) {
            notices.push_back(
                what + std::get<std::string>(notification.userInfo->at("NSApplicationBundleIdentifier")));
        });
    }

    [[nodiscard]] std::size_t running() { return workspace->runningApplications(mainApp).size(); }

    PrivateBus bus;
    std::unique_ptr<DBusWorkspace> workspace =
        std::make_unique<DBusWorkspace>(connection("near"), std::vector<std::string>{mainApp});
    std::vector<std::string> notices;
    Subscription launch = noting(Workspace::Notice::DidLaunchApplication, "launch of ");
    Subscription termination = noting(Workspace::Notice::DidTerminateApplication, "termination of ");
};

} // namespace

TEST_F(DBusWorkspaceTest, TellsOfEachOwnerOfTheName) {
    const std::string launched = "launch of " + mainApp;
    const std::string terminated = "termination of " + mainApp;
    EXPECT_EQ(running(), 0u);
    EXPECT_TRUE(announceRunning(connection("first"), mainApp));
    EXPECT_TRUE(waitUntil([&] { return notices.size() == 1; }));
    EXPECT_TRUE(announceRunning(connection("second"), mainApp));
    EXPECT_TRUE(announceRunning(connection("second"), "com.velloren.other"));
    EXPECT_EQ(running(), 2u) << "one that waits for the name runs as well";
    QDBusConnection::disconnectFromBus(QStringLiteral("first"));
    EXPECT_TRUE(waitUntil([&] { return running() == 1; }));
    EXPECT_TRUE(waitUntil([&] { return notices.size() == 3; }));
    EXPECT_THAT(notices, ElementsAre(launched, terminated, launched)) << "the name changed hands";
    QDBusConnection::disconnectFromBus(QStringLiteral("second"));
    EXPECT_TRUE(waitUntil([&] { return notices.size() == 4; }));
    EXPECT_EQ(notices.back(), terminated);
    EXPECT_EQ(running(), 0u);
}

TEST_F(DBusWorkspaceTest, AnObserverMayEndItsSubscriptionWhileItIsTold) {
    int calls = 0;
    auto own = std::make_unique<Subscription>();
    *own = workspace->addObserver(Workspace::Notice::DidLaunchApplication, [&](const Notification&) {
        ++calls;
        own.reset();
    });
    for (std::size_t round = 0; round < 2; ++round) {
        announceRunning(connection("first"), mainApp);
        EXPECT_TRUE(waitUntil([&] { return notices.size() == 2 * round + 1; }));
        QDBusConnection::disconnectFromBus(QStringLiteral("first"));
        EXPECT_TRUE(waitUntil([&] { return notices.size() == 2 * round + 2; }));
    }
    EXPECT_EQ(calls, 1);
}

TEST_F(DBusWorkspaceTest, LaunchesWhatTheBusCanStartAndNothingElse) {
    EXPECT_FALSE(workspace->launchApplication(mainApp));
    const std::string mark = bus.folder() / "started";
    bus.addService(mainApp, "/usr/bin/touch " + mark);
    EXPECT_TRUE(waitUntil([&] { return workspace->launchApplication(mainApp); }));
    EXPECT_TRUE(waitUntil([&] { return std::filesystem::exists(mark); }));
    EXPECT_TRUE(notices.empty()) << "it ended without ever taking its name";
}

TEST_F(DBusWorkspaceTest, KnowsNothingOnceTheBusHasGone) {
    announceRunning(connection("first"), mainApp);
    bus.stop();
    EXPECT_EQ(running(), 0u);
    EXPECT_FALSE(workspace->launchApplication(mainApp));
}

} // namespace velloren
