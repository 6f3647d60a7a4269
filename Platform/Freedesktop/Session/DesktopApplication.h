#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QObject>
#include <QVariantMap>

#include <functional>
#include <string>

namespace velloren {

/// Who started a program: the user, or the session, which does so at log-in.
enum class StartedBy { User, Session };

/// This application as an object on the session bus (`org.freedesktop.Application`), at the path that belongs
/// to its bundle identifier. Each call tells it that it was started again: it opens no files and has no
/// actions of its own. Main thread only.
class DesktopApplication final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

  public:
    /// Answers whether this instance stays: where it is about to end, who asks waits for its place.
    using Handler = std::function<bool(StartedBy)>;

    /// Make it before the application announces that it runs. `startedAgain` is called within a call of the
    /// bus.
    DesktopApplication(QDBusConnection bus, const std::string& bundleIdentifier, Handler startedAgain);
    ~DesktopApplication() override;

  public Q_SLOTS: // the bus's calls
    void Activate(const QVariantMap& platformData);
    void Open(const QStringList& uris, const QVariantMap& platformData);
    void ActivateAction(const QString& name, const QVariantList& parameter, const QVariantMap& platformData);

  private:
    void wasStartedAgain(StartedBy by);

    QDBusConnection bus;
    QString path;
    Handler startedAgain;
};

enum class OtherInstance { Activated, Gone, Silent };

/// Tells the instance that runs under the identifier that it was started again, and waits for the answer of
/// one that stays; it is silent where neither an answer nor its end comes within ten seconds. It is gone when
/// this process has the name meanwhile.
[[nodiscard]] OtherInstance activateOtherInstance(const QDBusConnection& bus,
                                                  const std::string& bundleIdentifier, StartedBy startedBy);

} // namespace velloren
