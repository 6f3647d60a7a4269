#include "Platform/Freedesktop/Session/DBusWorkspace.h"

#include "Platform/Freedesktop/Bus/BusSignal.h"

#include <QDBusMessage>
#include <QDBusReply>
#include <QDesktopServices>
#include <QUrl>

namespace velloren {

namespace {

const QString daemonService = QStringLiteral("org.freedesktop.DBus");
const QString daemonPath = QStringLiteral("/org/freedesktop/DBus");

// The daemon answers at once or not at all.
constexpr int daemonTimeout = 2000; // milliseconds

QDBusMessage callToDaemon(const QString& method, const QVariantList& arguments) {
    auto call = QDBusMessage::createMethodCall(daemonService, daemonPath, daemonService, method);
    call.setArguments(arguments);
    return call;
}

} // namespace

DBusWorkspace::DBusWorkspace(const QDBusConnection& sessionBus, const std::vector<std::string>& identifiers)
    : bus(sessionBus) {
    for (const std::string& identifier : identifiers) {
        followSignal(bus,
                     {daemonService, daemonPath, daemonService, QStringLiteral("NameOwnerChanged"),
                      QString::fromStdString(identifier)},
                     *this, SLOT(nameOwnerChanged(QString, QString, QString)));
        watched.emplace(identifier, std::nullopt);
    }
}

Subscription DBusWorkspace::addObserver(Notice notice, Observer observer) {
    const auto entry = observers.insert(observers.end(), {notice, std::move(observer)});
    return Subscription([this, entry] { observers.erase(entry); });
}

std::vector<RunningApplication> DBusWorkspace::runningApplications(const std::string& bundleIdentifier) {
    std::vector<RunningApplication> running;
    for (const QString& owner : ownersOf(bundleIdentifier).value_or(QStringList()))
        running.push_back({bundleIdentifier, owner.toStdString()});
    return running;
}

bool DBusWorkspace::isRunning(const std::string& bundleIdentifier) {
    const auto entry = watched.find(bundleIdentifier);
    if (entry != watched.end() && entry->second)
        return *entry->second;
    const auto owners = ownersOf(bundleIdentifier);
    if (entry != watched.end() && owners)
        entry->second = !owners->isEmpty();
    return owners && !owners->isEmpty();
}

/// None where the bus daemon does not tell.
std::optional<QStringList> DBusWorkspace::ownersOf(const std::string& bundleIdentifier) const {
    const QDBusReply<QStringList> owners =
        bus.call(callToDaemon(QStringLiteral("ListQueuedOwners"), {QString::fromStdString(bundleIdentifier)}),
                 QDBus::Block, daemonTimeout);
    if (owners.isValid())
        return owners.value();
    const bool hasNone = owners.error().name() == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner");
    return hasNone ? std::optional(QStringList()) : std::nullopt;
}

bool DBusWorkspace::launchApplication(const std::string& bundleIdentifier) {
    const QString name = QString::fromStdString(bundleIdentifier);
    const QDBusReply<QStringList> activatable =
        bus.call(callToDaemon(QStringLiteral("ListActivatableNames"), {}), QDBus::Block, daemonTimeout);
    if (!activatable.value().contains(name))
        return false;
    // The daemon answers once the application owns its name, or failed to: nobody waits for that.
    bus.asyncCall(callToDaemon(QStringLiteral("StartServiceByName"), {name, 0u}));
    return true;
}

bool DBusWorkspace::openURL(const URL& url) {
    return QDesktopServices::openUrl(QUrl::fromEncoded(QByteArray::fromStdString(url.absoluteString())));
}

void DBusWorkspace::nameOwnerChanged(const QString& name, const QString& oldOwner, const QString& newOwner) {
    watched.insert_or_assign(name.toStdString(), !newOwner.isEmpty());
    if (!oldOwner.isEmpty())
        tell(Notice::DidTerminateApplication, name);
    if (!newOwner.isEmpty())
        tell(Notice::DidLaunchApplication, name);
}

void DBusWorkspace::tell(Notice notice, const QString& name) const {
    const Notification notification{
        Notification::Info{{"NSApplicationBundleIdentifier", name.toStdString()}}};
    std::vector<Observer> listeners; // a copy: one may end its own or another's subscription
    for (const Entry& entry : observers) {
        if (entry.notice == notice)
            listeners.push_back(entry.observer);
    }
    for (const Observer& observer : listeners)
        observer(notification);
}

} // namespace velloren
