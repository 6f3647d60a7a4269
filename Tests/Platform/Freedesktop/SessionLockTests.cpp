#include "Platform/Freedesktop/Session/SessionLock.h"
#include "Tests/Platform/Freedesktop/QtBusTest.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDBusVirtualObject>

namespace velloren {

namespace {

const QString sessionPath = QStringLiteral("/org/freedesktop/login1/session/c7");
const QString loginSession = QStringLiteral("org.freedesktop.login1.Session");

/// The system's login manager, with one session.
class LoginManager final : public QDBusVirtualObject {
  public:
    explicit LoginManager(const QDBusConnection& bus) : connection(bus) {
        connection.registerVirtualObject("/org/freedesktop/login1", this, QDBusConnection::SubPath);
        connection.registerService("org.freedesktop.login1");
    }

    QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& call, const QDBusConnection& caller) override {
        const QVariant argument = call.arguments().value(1);
        QVariant answer = QVariant::fromValue(QDBusObjectPath(sessionPath));
        if (call.member() == "Get")
            answer = QVariant::fromValue(QDBusVariant(argument == "Id" ? QVariant("c7") : QVariant(locked)));
        return caller.send(call.createReply(answer));
    }

    void send(const QString& path, const QString& interface, const char* signal,
              const QVariantList& arguments = {}) {
        auto message = QDBusMessage::createSignal(path, interface, signal);
        message.setArguments(arguments);
        connection.send(message);
    }

    void hint(bool now) {
        send(sessionPath, "org.freedesktop.DBus.Properties", "PropertiesChanged",
             {loginSession, QVariantMap{{"LockedHint", now}}, QStringList()});
    }

    bool locked = true;

  private:
    QDBusConnection connection;
};

using SessionLockTest = QtBusTest;

} // namespace

TEST_F(SessionLockTest, TellsOfEachWayToLockAndLetsWaitUntilNobodyDoes) {
    LoginManager manager(connection("login"));
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
    manager.hint(false);
    manager.send(sessionPath, loginSession, "Lock");
    EXPECT_TRUE(waitUntil([&] { return locks == 2; }));
    EXPECT_EQ(runs, 1) << "the screen saver still shows";
    manager.send("/org/gnome/ScreenSaver", "org.gnome.ScreenSaver", "ActiveChanged", {false});
    EXPECT_TRUE(waitUntil([&] { return runs == 2; }));
    manager.send(sessionPath + "0", loginSession, "Lock");
    manager.hint(true);
    EXPECT_TRUE(waitUntil([&] { return lock.isLocked(); }));
    EXPECT_EQ(locks, 3) << "another session is another's";
}

} // namespace velloren
