#pragma once

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QObject>

#include <functional>

namespace velloren {

/// Follows the desktop's settings portal: the light or dark appearance and the clock format. What it says is
/// handed to `Appearance` and `CurrentLocale`; a desktop without a portal leaves them as they are. Asks without
/// waiting. Main thread only.
class DesktopSettings final : public QObject {
    Q_OBJECT

  public:
    /// `changed` runs after each setting that was taken over.
    DesktopSettings(const QDBusConnection& sessionBus, std::function<void()> changed);

  private Q_SLOTS:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

  private:
    void read(const QString& group, const QString& key);

    QDBusConnection bus;
    std::function<void()> changed;
};

} // namespace velloren
