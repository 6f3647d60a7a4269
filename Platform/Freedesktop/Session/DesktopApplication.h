#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QVariantMap>

#include <functional>
#include <string>

namespace velloren {

/// This application as an object on the session bus (`org.freedesktop.Application`), at the path that belongs
/// to its bundle identifier. Each call asks it to show itself: it opens no files and has no actions of its
/// own. Main thread only.
class DesktopApplication final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

  public:
    /// Make it before the application announces that it runs. `activated` is called within a call of the bus.
    DesktopApplication(QDBusConnection bus, const std::string& bundleIdentifier,
                       std::function<void()> activated);
    ~DesktopApplication() override;

  public Q_SLOTS: // the bus's calls
    void Activate(const QVariantMap& platformData);
    void Open(const QStringList& uris, const QVariantMap& platformData);
    void ActivateAction(const QString& name, const QVariantList& parameter, const QVariantMap& platformData);

  private:
    QDBusConnection bus;
    QString path;
    std::function<void()> activated;
};

enum class OtherInstance { Activated, Gone, Silent };

/// Asks the instance that runs under the identifier to show itself, and waits for the answer. It is gone when
/// this process has the name meanwhile.
[[nodiscard]] OtherInstance activateOtherInstance(const QDBusConnection& bus,
                                                  const std::string& bundleIdentifier);

} // namespace velloren
