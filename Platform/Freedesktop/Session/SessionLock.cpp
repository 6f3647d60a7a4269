#include "Platform/Freedesktop/Session/SessionLock.h"

#include "Platform/Freedesktop/Bus/BusQuestion.h"
#include "Platform/Freedesktop/Bus/BusSignal.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>

#include <utility>

namespace velloren {

namespace {

const QString loginService = QStringLiteral("org.freedesktop.login1");
const QString loginPath = QStringLiteral("/org/freedesktop/login1");
const QString loginManager = QStringLiteral("org.freedesktop.login1.Manager");
const QString loginSession = QStringLiteral("org.freedesktop.login1.Session");
const QString ownSession = QStringLiteral("/org/freedesktop/login1/session/auto");
const QString properties = QStringLiteral("org.freedesktop.DBus.Properties");
const QString lockedHint = QStringLiteral("LockedHint");

constexpr auto screenSavers = {"org.freedesktop.ScreenSaver", "org.gnome.ScreenSaver",
                               "org.cinnamon.ScreenSaver", "org.mate.ScreenSaver", "org.xfce.ScreenSaver"};

QDBusMessage question(const QString& path, const QString& interface, const QString& method,
                      const QVariantList& arguments) {
    auto call = QDBusMessage::createMethodCall(loginService, path, interface, method);
    call.setArguments(arguments);
    return call;
}

} // namespace

void SessionLock::follow(const QDBusConnection& sessionBus, const QDBusConnection& systemBus) {
    for (const char* interface : screenSavers)
        followSignal(sessionBus, {{}, {}, QLatin1String(interface), QStringLiteral("ActiveChanged")}, *this,
                     SLOT(screenSaverChanged(bool)));
    if (!systemBus.isConnected())
        return;
    ask<QDBusVariant>(
        systemBus, question(ownSession, properties, QStringLiteral("Get"), {loginSession, "Id"}), *this,
        [this, systemBus](const QDBusVariant& id) {
            ask<QDBusObjectPath>(
                systemBus,
                question(loginPath, loginManager, QStringLiteral("GetSession"), {id.variant().toString()}),
                *this,
                [this, systemBus](const QDBusObjectPath& path) { followSession(systemBus, path.path()); });
        });
}

void SessionLock::followSession(const QDBusConnection& systemBus, const QString& path) {
    followSignal(systemBus, {loginService, path, loginSession, QStringLiteral("Lock")}, *this,
                 SLOT(lockRequested()));
    followSignal(systemBus, {loginService, path, properties, QStringLiteral("PropertiesChanged")}, *this,
                 SLOT(sessionChanged(QString, QVariantMap)));
    ask<QDBusVariant>(systemBus,
                      question(path, properties, QStringLiteral("Get"), {loginSession, lockedHint}), *this,
                      [this](const QDBusVariant& hint) { set(hintedLocked, hint.variant().toBool()); });
}

void SessionLock::whenUnlocked(std::function<void()> action) {
    if (isLocked())
        waiting = std::move(action);
    else
        action();
}

void SessionLock::screenSaverChanged(bool active) {
    set(screenSaverActive, active);
}

void SessionLock::lockRequested() {
    if (locked)
        locked(); // whether anybody does it is in the hint
}

void SessionLock::sessionChanged(const QString& interface, const QVariantMap& changed) {
    if (interface == loginSession && changed.contains(lockedHint))
        set(hintedLocked, changed.value(lockedHint).toBool());
}

void SessionLock::set(bool& source, bool now) {
    const bool before = isLocked();
    source = now;
    if (!before && isLocked())
        lockRequested();
    else if (const auto action = isLocked() ? nullptr : std::exchange(waiting, nullptr))
        action();
}

} // namespace velloren
