#include "Platform/Freedesktop/Session/DesktopSettings.h"

#include "Platform/Desktop/Appearance.h"
#include "Platform/Foundation/CurrentLocale.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <utility>

namespace velloren {

namespace {

const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settingsInterface = QStringLiteral("org.freedesktop.portal.Settings");

const QString appearanceGroup = QStringLiteral("org.freedesktop.appearance");
const QString colorScheme = QStringLiteral("color-scheme");
const QString interfaceGroup = QStringLiteral("org.gnome.desktop.interface");
const QString clockFormat = QStringLiteral("clock-format");

const QString xfconf = QStringLiteral("org.xfce.Xfconf");
const QString xfconfPath = QStringLiteral("/org/xfce/Xfconf");
const QString xfcePanel = QStringLiteral("xfce4-panel");
const QString panelDarkMode = QStringLiteral("/panels/dark-mode");

/// Older portals wrap the value in one variant more than newer ones.
QVariant unwrapped(QVariant value) {
    while (value.userType() == qMetaTypeId<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

std::optional<bool> isDark(uint scheme) {
    switch (scheme) {
    case 1:
        return true;
    case 2:
        return false;
    default:
        return std::nullopt; // no preference
    }
}

HourCycle hourCycleOf(const QString& format) {
    if (format == QStringLiteral("12h"))
        return HourCycle::TwelveHour;
    return format == QStringLiteral("24h") ? HourCycle::TwentyFourHour : HourCycle::FromLocale;
}

bool desktopIs(const char* name) {
    return qgetenv("XDG_CURRENT_DESKTOP").toUpper().split(':').contains(name);
}

} // namespace

DesktopSettings::DesktopSettings(const QDBusConnection& sessionBus, std::function<void()> changed)
    : bus(sessionBus), changed(std::move(changed)) {
    followPortal();
    followXfcePanel();
    if (desktopIs("GNOME")) {
        panelIsDark = true; // whatever the colour scheme
        applyAppearance();
    }
}

void DesktopSettings::followPortal() {
    bus.connect(portalService, portalPath, settingsInterface, QStringLiteral("SettingChanged"), this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    for (const auto& [group, key] :
         {std::pair(appearanceGroup, colorScheme), std::pair(interfaceGroup, clockFormat)}) {
        auto question = QDBusMessage::createMethodCall(portalService, portalPath, settingsInterface,
                                                       QStringLiteral("Read"));
        question << group << key;
        ask(question, [this, group = group, key = key](const QDBusVariant& value) {
            settingChanged(group, key, value);
        });
    }
}

void DesktopSettings::followXfcePanel() {
    bus.connect(xfconf, xfconfPath, xfconf, QStringLiteral("PropertyChanged"), this,
                SLOT(panelSettingChanged(QString, QString, QDBusVariant)));
    auto question = QDBusMessage::createMethodCall(xfconf, xfconfPath, xfconf, QStringLiteral("GetProperty"));
    question << xfcePanel << panelDarkMode;
    question.setAutoStartService(desktopIs("XFCE"));
    ask(question,
        [this](const QDBusVariant& value) { panelSettingChanged(xfcePanel, panelDarkMode, value); });
}

void DesktopSettings::ask(const QDBusMessage& question, std::function<void(const QDBusVariant&)> answered) {
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, answered = std::move(answered)] {
        const QDBusPendingReply<QDBusVariant> reply = *watcher;
        if (reply.isValid())
            answered(reply.value());
        watcher->deleteLater();
    });
}

void DesktopSettings::settingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
    const QVariant setting = unwrapped(value.variant());
    if (group == appearanceGroup && key == colorScheme) {
        schemeIsDark = isDark(setting.toUInt());
        applyAppearance();
    } else if (group == interfaceGroup && key == clockFormat) {
        CurrentLocale::setHourCycle(hourCycleOf(setting.toString()));
    }
}

void DesktopSettings::panelSettingChanged(const QString& channel, const QString& property,
                                          const QDBusVariant& value) {
    if (channel != xfcePanel || property != panelDarkMode)
        return;
    panelIsDark = unwrapped(value.variant()).toBool();
    applyAppearance();
}

void DesktopSettings::applyAppearance() {
    const std::optional<bool> dark = panelIsDark ? panelIsDark : schemeIsDark;
    Appearance::setCurrentName(
        dark ? std::optional(*dark ? Appearance::vibrantDark : Appearance::vibrantLight) : std::nullopt);
    changed();
}

} // namespace velloren
