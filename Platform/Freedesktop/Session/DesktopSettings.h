#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QObject>

#include <functional>
#include <optional>

namespace velloren {

/// Follows what the desktop says of the bar's appearance and of the clock format, and hands it to
/// `Appearance` and `CurrentLocale`. A panel's own setting comes before the colour scheme of the settings
/// portal; a desktop that says nothing leaves both as they are. Asks without waiting. Main thread only.
class DesktopSettings final : public QObject {
    Q_OBJECT

  public:
    /// `changed` runs whenever the bar's appearance may have changed.
    DesktopSettings(const QDBusConnection& sessionBus, std::function<void()> changed);

  private Q_SLOTS:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);
    void panelSettingChanged(const QString& channel, const QString& property, const QDBusVariant& value);

  private:
    void followPortal();
    void followXfcePanel();
    void ask(const QDBusMessage& question, std::function<void(const QDBusVariant&)> answered);
    void applyAppearance();

    QDBusConnection bus;
    std::function<void()> changed;
    /// None where nothing was said.
    std::optional<bool> panelIsDark;
    std::optional<bool> schemeIsDark;
};

} // namespace velloren
