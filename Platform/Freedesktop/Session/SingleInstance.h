#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QObject>
#include <QVariantMap>

#include <functional>
#include <optional>
#include <string>

namespace velloren {

/// Who started a program: the user, or the session, which does so at log-in.
enum class StartedBy { User, Session };

enum class InstanceRank { First, Later };

/// Takes `bundleIdentifier` as a name of this process on the bus, or waits in line for it behind another
/// instance: that is how the other processes see that this application runs. None when the bus does not
/// agree.
std::optional<InstanceRank> announceRunning(const QDBusConnection& bus, const std::string& bundleIdentifier);

/// This program as the only one that stays of those that run under its bundle identifier. On the session bus
/// it is an object (`org.freedesktop.Application`), at the path that belongs to the identifier. Each call
/// tells it that it was started again: it opens no files and has no actions of its own. Main thread only.
class SingleInstance final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

  public:
    /// Answers whether this instance stays: where it is about to end, who asks waits for its place.
    using Handler = std::function<bool(StartedBy)>;

    enum class Outcome {
        Stays,          ///< this is the only one
        FirstActivated, ///< another one was here before and knows that it was started again
        FirstSilent,    ///< another one neither answers nor ends within ten seconds
        Refused         ///< by the bus
    };

    /// `startedAgain` is called within a call of the bus.
    SingleInstance(QDBusConnection bus, const std::string& bundleIdentifier, Handler startedAgain);
    ~SingleInstance() override;

    /// Announces that this program runs, and finds out whether it stays. Waits for the other instance.
    [[nodiscard]] Outcome start(StartedBy startedBy);

  public Q_SLOTS: // the bus's calls
    void Activate(const QVariantMap& platformData);
    void Open(const QStringList& uris, const QVariantMap& platformData);
    void ActivateAction(const QString& name, const QVariantList& parameter, const QVariantMap& platformData);

  private:
    [[nodiscard]] Outcome activateFirst(StartedBy startedBy);
    void wasStartedAgain(StartedBy by);

    QDBusConnection bus;
    QString name;
    QString path;
    Handler startedAgain;
};

} // namespace velloren
