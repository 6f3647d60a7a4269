#pragma once

#include "Platform/Desktop/Workspace.h"

#include <QDBusConnection>
#include <QObject>
#include <QStringList>

#include <list>
#include <map>
#include <optional>

namespace velloren {

/// The workspace as the session bus shows it: an application is launched when its bundle identifier gets an
/// owner, and terminated when it loses one; where the next instance takes over, it is terminated and then
/// launched. Only the given applications are watched, so that the
/// rest of the session's comings and goings wake nobody; of those it keeps in mind whether they run.
class DBusWorkspace final : public QObject, public Workspace {
    Q_OBJECT

  public:
    DBusWorkspace(const QDBusConnection& sessionBus, const std::vector<std::string>& identifiers);

    Subscription addObserver(Notice notice, Observer observer) override;
    [[nodiscard]] std::vector<RunningApplication>
    runningApplications(const std::string& bundleIdentifier) override;
    [[nodiscard]] bool isRunning(const std::string& bundleIdentifier) override;
    bool launchApplication(const std::string& bundleIdentifier) override;
    bool openURL(const URL& url) override;

  private Q_SLOTS:
    void nameOwnerChanged(const QString& name, const QString& oldOwner, const QString& newOwner);

  private:
    [[nodiscard]] std::optional<QStringList> ownersOf(const std::string& bundleIdentifier) const;
    void tell(Notice notice, const QString& name) const;

    struct Entry {
        Notice notice;
        Observer observer;
    };

    QDBusConnection bus;
    std::list<Entry> observers;
    /// Whether each of those that are watched has an owner; none until the bus was asked or told of it.
    std::map<std::string, std::optional<bool>> watched;
};

} // namespace velloren
