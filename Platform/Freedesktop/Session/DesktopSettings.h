#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>

#include <functional>

namespace velloren {

/// Follows what the desktop says of the bar's appearance and of the clock format, and hands it to
/// `Appearance` and `CurrentLocale`. What nobody answers, or answers with another type, is as good as not
/// said. Asks without waiting. Main thread only.
///
/// The clock format counts on the desktops whose own settings it is a part of; the portals of others answer
/// with what nobody chose. Cinnamon's other key is on no bus.
class DesktopSettings final : public QObject {
    Q_OBJECT

  public:
    /// Which desktop it is, is what XDG_CURRENT_DESKTOP says at this moment. `changed` runs when the bar's
    /// appearance may have changed, or is about to.
    DesktopSettings(const QDBusConnection& sessionBus, std::function<void()> changed);

  private Q_SLOTS:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);
    void panelSettingChanged(const QString& channel, const QString& property, const QDBusVariant& value);
    void panelSettingRemoved(const QString& channel, const QString& property);

  private:
    void followPortal();
    void followXfcePanel();

    QDBusConnection bus;
    std::function<void()> changed;
};

} // namespace velloren
