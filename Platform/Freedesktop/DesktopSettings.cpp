#include "Platform/Freedesktop/DesktopSettings.h"

#include "Platform/Appearance.h"
#include "Platform/CurrentLocale.h"

#include <QDBusMessage>
#include <QDBusPendingReply>

namespace velloren {

namespace {

const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settingsInterface = QStringLiteral("org.freedesktop.portal.Settings");

const QString appearanceGroup = QStringLiteral("org.freedesktop.appearance");
const QString colorScheme = QStringLiteral("color-scheme");
const QString interfaceGroup = QStringLiteral("org.gnome.desktop.interface");
const QString clockFormat = QStringLiteral("clock-format");

/// Older portals wrap the value in one variant more than newer ones.
QVariant unwrapped(QVariant value) {
    while (value.userType() == qMetaTypeId<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

std::optional<std::string> appearanceOf(uint scheme) {
    switch (scheme) {
    case 1:
        return Appearance::vibrantDark;
    case 2:
        return Appearance::vibrantLight;
    default:
        return std::nullopt; // no preference
    }
}

HourCycle hourCycleOf(const QString& format) {
    if (format == QStringLiteral("12h"))
        return HourCycle::TwelveHour;
    return format == QStringLiteral("24h") ? HourCycle::TwentyFourHour : HourCycle::FromLocale;
}

} // namespace

DesktopSettings::DesktopSettings(const QDBusConnection& sessionBus, std::function<void()> changed)
    : bus(sessionBus), changed(std::move(changed)) {
    bus.connect(portalService, portalPath, settingsInterface, QStringLiteral("SettingChanged"), this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    read(appearanceGroup, colorScheme);
    read(interfaceGroup, clockFormat);
}

void DesktopSettings::read(const QString& group, const QString& key) {
    auto call = QDBusMessage::createMethodCall(portalService, portalPath, settingsInterface,
                                               QStringLiteral("Read"));
    call << group << key;
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, group, key, watcher] {
        const QDBusPendingReply<QDBusVariant> reply = *watcher;
        if (reply.isValid())
            settingChanged(group, key, reply.value());
        watcher->deleteLater();
    });
}

void DesktopSettings::settingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
    const QVariant setting = unwrapped(value.variant());
    if (group == appearanceGroup && key == colorScheme) {
        Appearance::setCurrentName(appearanceOf(setting.toUInt()));
    } else if (group == interfaceGroup && key == clockFormat) {
        CurrentLocale::setHourCycle(hourCycleOf(setting.toString()));
    } else {
        return;
    }
    changed();
}

} // namespace velloren
