#include "Platform/Freedesktop/Session/SessionLock.h"
#include "Tests/Platform/Freedesktop/QtBusTest.h"

#include <QDBusObjectPath>

namespace velloren {

namespace {

const QString sessionPath = QStringLiteral("/org/freedesktop/login1/session/c7");
const QString loginSession = QStringLiteral("org.freedesktop.login1.Session");

/// The system's login manager has one session, which is locked.
class SessionLockTest : public QtBusTest {
  protected:
    void hint(bool locked) {
        manager.send(sessionPath, "org.freedesktop.DBus.Properties", "PropertiesChanged",
                     {loginSession, QVariantMap{{"LockedHint", locked}}, QStringList()});
    }

    FakeService manager{connection("login"), [](const QDBusMessage& call) {
                            const bool isId = call.arguments().value(1) == "Id";
                            return call.member() == "Get" ? boxed(isId ? QVariant("c7") : QVariant(true))
                                                          : QVariant::fromValue(QDBusObjectPath(sessionPath));
                        }};
};

} // namespace

TEST_F(SessionLockTest, TellsOfEachWayToLockAndLetsWaitUntilNobodyDoes) {
    manager.start("org.freedesktop.login1", "/org/freedesktop/login1");
    const QDBusConnection agent = connection("agent");
    SessionLock lock;
    int locks = 0;
    int runs = 0;
    lock.setLockedHandler([&] { ++locks; });
    lock.whenUnlocked([&] { ++runs; });
    EXPECT_EQ(runs, 1);
    lock.follow(agent, agent);
    EXPECT_TRUE(waitUntil([&] { return locks == 1; })) << "it was locked before";
    lock.whenUnlocked([&] { ++runs; });
    manager.send("/ScreenSaver", "org.freedesktop.ScreenSaver", "ActiveChanged", {true});
    hint(false);
    manager.send(sessionPath, loginSession, "Lock");
    EXPECT_TRUE(waitUntil([&] { return locks == 2; }));
    EXPECT_EQ(runs, 1) << "the screen saver still shows";
    manager.send("/org/gnome/ScreenSaver", "org.gnome.ScreenSaver", "ActiveChanged", {false});
    EXPECT_TRUE(waitUntil([&] { return runs == 2; }));
    manager.send(sessionPath + "0", loginSession, "Lock");
    hint(true);
    EXPECT_TRUE(waitUntil([&] { return lock.isLocked(); }));
    EXPECT_EQ(locks, 3) << "another session is another's";
}

} // namespace velloren
