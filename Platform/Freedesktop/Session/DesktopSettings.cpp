#include "Platform/Freedesktop/Session/DesktopSettings.h"

#include "Platform/Desktop/Appearance.h"
#include "Platform/Foundation/CurrentLocale.h"
#include "Platform/Freedesktop/Bus/BusQuestion.h"
#include "Platform/Freedesktop/Bus/BusSignal.h"

#include <algorithm>
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

/// None where there is no preference.
std::optional<std::string> appearanceOf(const QVariant& scheme) {
    if (scheme.userType() != QMetaType::UInt)
        return std::nullopt;
    switch (scheme.toUInt()) {
    case 1:
        return Appearance::vibrantDark;
    case 2:
        return Appearance::vibrantLight;
    default:
        return std::nullopt;
    }
}

HourCycle hourCycleOf(const QVariant& format) {
    if (format == QStringLiteral("12h"))
        return HourCycle::TwelveHour;
    return format == QStringLiteral("24h") ? HourCycle::TwentyFourHour : HourCycle::FromLocale;
}

QByteArrayList desktopNames() {
    return qgetenv("XDG_CURRENT_DESKTOP").toUpper().split(':');
}

bool hasAnyName(std::initializer_list<const char*> names) {
    const QByteArrayList own = desktopNames();
    return std::any_of(names.begin(), names.end(), [&own](const char* name) { return own.contains(name); });
}

bool ownsClockFormat() {
    return hasAnyName({"GNOME", "CINNAMON", "X-CINNAMON", "BUDGIE", "UNITY"});
}

/// Whether the bar is dark beside light applications as well, as long as nobody gave it another theme.
/// Relatives of GNOME (GNOME-Flashback:GNOME, Budgie:GNOME) have bars of their own.
bool comesWithDarkBar() {
    const QByteArrayList names = desktopNames();
    const bool isRelative = std::any_of(names.begin(), names.end(), [](const QByteArray& name) {
        return name.startsWith("GNOME-") || name.startsWith("BUDGIE");
    });
    return hasAnyName({"CINNAMON", "X-CINNAMON", "SWAY"}) || (names.contains("GNOME") && !isRelative);
}

} // namespace

DesktopSettings::DesktopSettings(const QDBusConnection& sessionBus, std::function<void()> changed)
    : bus(sessionBus), changed(std::move(changed)) {
    followPortal();
    followXfcePanel();
    if (comesWithDarkBar() && Appearance::setName(AppearanceSource::CustomaryBar, Appearance::vibrantDark))
        this->changed();
}

void DesktopSettings::followPortal() {
    followSignal(bus, {{}, portalPath, settingsInterface, QStringLiteral("SettingChanged")}, *this,
                 SLOT(settingChanged(QString, QString, QDBusVariant)));
    for (const auto& [group, key] :
         {std::pair(appearanceGroup, colorScheme), std::pair(interfaceGroup, clockFormat)}) {
        auto question = QDBusMessage::createMethodCall(portalService, portalPath, settingsInterface,
                                                       QStringLiteral("Read"));
        question << group << key;
        ask<QDBusVariant>(bus, question, *this, [this, group = group, key = key](const QDBusVariant& value) {
            settingChanged(group, key, value);
        });
    }
}

void DesktopSettings::followXfcePanel() {
    followSignal(bus, {{}, xfconfPath, xfconf, QStringLiteral("PropertyChanged"), xfcePanel}, *this,
                 SLOT(panelSettingChanged(QString, QString, QDBusVariant)));
    followSignal(bus, {{}, xfconfPath, xfconf, QStringLiteral("PropertyRemoved"), xfcePanel}, *this,
                 SLOT(panelSettingRemoved(QString, QString)));
    auto question = QDBusMessage::createMethodCall(xfconf, xfconfPath, xfconf, QStringLiteral("GetProperty"));
    question << xfcePanel << panelDarkMode;
    question.setAutoStartService(hasAnyName({"XFCE"}));
    ask<QDBusVariant>(bus, question, *this, [this](const QDBusVariant& value) {
        panelSettingChanged(xfcePanel, panelDarkMode, value);
    });
}

void DesktopSettings::settingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
    const QVariant setting = unwrapped(value.variant());
    if (group == appearanceGroup && key == colorScheme) {
        Appearance::setName(AppearanceSource::ColorScheme, appearanceOf(setting));
        changed();
    } else if (group == interfaceGroup && key == clockFormat && ownsClockFormat()) {
        CurrentLocale::setHourCycle(hourCycleOf(setting));
    }
}

void DesktopSettings::panelSettingChanged(const QString& channel, const QString& property,
                                          const QDBusVariant& value) {
    if (channel != xfcePanel || property != panelDarkMode)
        return;
    // Without it the panel has the desktop's theme, and that may be dark as well.
    const QVariant mode = unwrapped(value.variant());
    const bool isDark = mode.userType() == QMetaType::Bool && mode.toBool();
    Appearance::setName(AppearanceSource::BarSetting,
                        isDark ? std::optional(Appearance::vibrantDark) : std::nullopt);
    changed();
}

void DesktopSettings::panelSettingRemoved(const QString& channel, const QString& property) {
    panelSettingChanged(channel, property, QDBusVariant(false));
}

} // namespace velloren
