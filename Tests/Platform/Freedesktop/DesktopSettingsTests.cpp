#include "Platform/Desktop/Appearance.h"
#include "Platform/Foundation/CurrentLocale.h"
#include "Platform/Freedesktop/Session/DesktopSettings.h"
#include "Tests/Support/PrivateBus.h"
#include "Tests/Support/QtTest.h"

#include <QDBusConnectionInterface>
#include <QDBusContext>

#include <map>

namespace velloren {

namespace {

/// A service that answers what it was given, as the portal and Xfconf do, and nothing it was not given.
class SettingsService : public QObject, public QDBusContext {
    Q_OBJECT

  public:
    SettingsService(const PrivateBus& bus, const QString& name, const QString& path)
        : connection(QDBusConnection::connectToBus(QString::fromStdString(bus.address()), name)) {
        connection.registerObject(path, this,
                                  QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals);
        connection.interface()->registerService(name);
    }

    ~SettingsService() override { QDBusConnection::disconnectFromBus(connection.name()); }

    std::map<QString, QVariant> values;

  protected:
    QDBusVariant valueOf(const QString& key) {
        if (values.count(key) == 0)
            sendErrorReply(QDBusError::UnknownProperty, key);
        return QDBusVariant(values[key]);
    }

    QDBusConnection connection;
};

class Portal final : public SettingsService {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

  public:
    explicit Portal(const PrivateBus& bus)
        : SettingsService(bus, "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop") {}

  public Q_SLOTS:

    QDBusVariant Read(const QString&, const QString& key) {
        return QDBusVariant(QVariant::fromValue(valueOf(key))); // one variant too many, as they do
    }

  Q_SIGNALS:
    void SettingChanged(const QString& group, const QString& key, const QDBusVariant& value);
};

class Xfconf final : public SettingsService {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.xfce.Xfconf")

  public:
    explicit Xfconf(const PrivateBus& bus) : SettingsService(bus, "org.xfce.Xfconf", "/org/xfce/Xfconf") {}

  public Q_SLOTS:

    QDBusVariant GetProperty(const QString&, const QString& property) { return valueOf(property); }

  Q_SIGNALS:
    void PropertyChanged(const QString& channel, const QString& property, const QDBusVariant& value);
    void PropertyRemoved(const QString& channel, const QString& property);
};

class DesktopSettingsTest : public QtTest {
  protected:
    ~DesktopSettingsTest() override { leave(); }

    void enter(const char* desktop) {
        leave();
        name = std::make_unique<EnvironmentVariable>("XDG_CURRENT_DESKTOP", desktop);
        const auto own = QDBusConnection::connectToBus(QString::fromStdString(bus.address()), "agent");
        settings = std::make_unique<DesktopSettings>(own, [this] { ++changes; });
    }

    void leave() {
        settings.reset();
        QDBusConnection::disconnectFromBus("agent");
        for (const auto source :
             {AppearanceSource::BarSetting, AppearanceSource::CustomaryBar, AppearanceSource::ColorScheme})
            Appearance::setName(source, std::nullopt);
        CurrentLocale::setHourCycle(HourCycle::FromLocale);
        name.reset();
    }

    static bool isDark() { return Appearance::currentName() == Appearance::vibrantDark; }

    static std::string clock() {
        const std::string locale = CurrentLocale::identifier();
        const auto mark = locale.find("@hours=");
        return mark == std::string::npos ? "" : locale.substr(mark + 7);
    }

    static QDBusVariant value(const QVariant& content) { return QDBusVariant(content); }

    const EnvironmentVariable language{"LC_ALL", "en_US.UTF-8"};
    PrivateBus bus;
    std::unique_ptr<EnvironmentVariable> name;
    std::unique_ptr<DesktopSettings> settings;
    int changes = 0;
};

constexpr auto appearance = "org.freedesktop.appearance";
constexpr auto interface = "org.gnome.desktop.interface";

} // namespace

TEST_F(DesktopSettingsTest, FollowThePortalFromTheStartAndLive) {
    Portal portal(bus);
    portal.values = {{"color-scheme", 1U}, {"clock-format", "24h"}};
    enter("GNOME-Flashback:GNOME");
    EXPECT_FALSE(isDark()) << "its bar is not the one of GNOME";
    EXPECT_TRUE(waitUntil([] { return isDark() && clock() == "h23"; }));
    Q_EMIT portal.SettingChanged(interface, "clock-format", value("12h"));
    EXPECT_TRUE(waitUntil([] { return clock() == "h12"; }));
    for (const QVariant& light : {QVariant(2U), QVariant(0U), QVariant(7U), QVariant("1"), QVariant(1.0)}) {
        Q_EMIT portal.SettingChanged(appearance, "color-scheme", value(light));
        EXPECT_TRUE(waitUntil([] { return !isDark(); })) << light.typeName();
        Q_EMIT portal.SettingChanged(appearance, "color-scheme", value(1U));
        EXPECT_TRUE(waitUntil(isDark));
    }
    Q_EMIT portal.SettingChanged(interface, "clock-format", value(QStringList("24h")));
    EXPECT_TRUE(waitUntil([] { return clock().empty(); })) << "nothing that can be followed";
}

TEST_F(DesktopSettingsTest, KnowTheDesktopsByTheirNames) {
    struct Case {
        const char* desktop;
        bool isDark;
        bool ownsClockFormat;
    };

    Portal portal(bus);
    portal.values = {{"color-scheme", 0U}, {"clock-format", "24h"}};
    for (const auto& [desktop, dark, ownsClockFormat] :
         {Case{"GNOME", true, true}, Case{"ubuntu:GNOME", true, true},
          Case{"GNOME-Flashback:GNOME", false, true}, Case{"GNOME-Classic:GNOME", false, true},
          Case{"Budgie:GNOME", false, true}, Case{"X-Cinnamon", true, true},
          Case{"Unity:Unity7:ubuntu", false, true}, Case{"sway", true, false}, Case{"XFCE", false, false},
          Case{"KDE", false, false}, Case{"NOTGNOME", false, false}, Case{"", false, false}}) {
        enter(desktop);
        const int before = changes;
        EXPECT_TRUE(waitUntil([&] { return changes > before; }))
            << "the portal answered in the order of asking";
        runPendingEvents();
        EXPECT_EQ(isDark(), dark) << desktop;
        EXPECT_TRUE(!ownsClockFormat || waitUntil([] { return clock() == "h23"; })) << desktop;
        Q_EMIT portal.SettingChanged(interface, "clock-format", value("12h"));
        Q_EMIT portal.SettingChanged(appearance, "color-scheme", value(1U));
        EXPECT_TRUE(waitUntil([&] { return changes > before + 1; }));
        EXPECT_TRUE(isDark()) << desktop;
        EXPECT_EQ(clock(), ownsClockFormat ? "h12" : "") << desktop;
    }
}

TEST_F(DesktopSettingsTest, PutTheDarkModeOfXfcesPanelBeforeTheColourScheme) {
    Portal portal(bus);
    portal.values = {{"color-scheme", 2U}};
    Xfconf xfconf(bus);
    xfconf.values = {{"/panels/dark-mode", true}};
    enter("XFCE");
    EXPECT_TRUE(waitUntil(isDark));
    const auto set = [&](const QVariant& mode) {
        Q_EMIT xfconf.PropertyChanged("xfce4-panel", "/panels/dark-mode", value(mode));
    };
    for (const QVariant& off : {QVariant(false), QVariant("true"), QVariant(1)}) {
        set(off);
        EXPECT_TRUE(waitUntil([] { return !isDark(); })) << off.typeName();
        set(true);
        EXPECT_TRUE(waitUntil(isDark));
    }
    Q_EMIT xfconf.PropertyChanged("xsettings", "/panels/dark-mode", value(false));
    Q_EMIT xfconf.PropertyRemoved("xfce4-panel", "/panels/size");
    Q_EMIT portal.SettingChanged(appearance, "color-scheme", value(2U));
    const int before = changes;
    EXPECT_TRUE(waitUntil([&] { return changes > before; }));
    EXPECT_TRUE(isDark()) << "nothing of this was the panel's";
    Q_EMIT xfconf.PropertyRemoved("xfce4-panel", "/panels/dark-mode");
    EXPECT_TRUE(waitUntil([] { return !isDark(); }));
}

TEST_F(DesktopSettingsTest, HearOfServicesThatComeLater) {
    enter("XFCE");
    Portal portal(bus);
    Xfconf xfconf(bus);
    Q_EMIT portal.SettingChanged(appearance, "color-scheme", value(1U));
    EXPECT_TRUE(waitUntil(isDark));
    Q_EMIT portal.SettingChanged(appearance, "color-scheme", value(2U));
    EXPECT_TRUE(waitUntil([] { return !isDark(); }));
    Q_EMIT xfconf.PropertyChanged("xfce4-panel", "/panels/dark-mode", value(true));
    EXPECT_TRUE(waitUntil(isDark));
}

} // namespace velloren

#include "DesktopSettingsTests.moc"
