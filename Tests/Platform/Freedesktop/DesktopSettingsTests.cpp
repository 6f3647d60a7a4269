#include "Platform/Desktop/Appearance.h"
#include "Platform/Foundation/CurrentLocale.h"
#include "Platform/Freedesktop/Session/DesktopSettings.h"
#include "Tests/Platform/Freedesktop/QtBusTest.h"

#include <QDBusMessage>
#include <QDBusVirtualObject>

namespace velloren {

namespace {

QVariant boxed(const QVariant& value) {
    return QVariant::fromValue(QDBusVariant(value));
}

/// The portal or Xfconf: answers what it was given, and nothing it was not given.
class SettingsService final : public QDBusVirtualObject {
  public:
    SettingsService(const QDBusConnection& bus, const char* name, const char* path, const char* interface)
        : connection(bus), name(name), path(path), interface(interface) {}

    void start() {
        connection.registerVirtualObject(path, this);
        connection.registerService(name);
    }

    QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& call, const QDBusConnection& caller) override {
        const QVariant value = values.value(call.arguments().value(1).toString());
        const bool isPortal = call.member() == "Read"; // one variant too many, as they do
        return value.isValid() && caller.send(call.createReply(boxed(isPortal ? boxed(value) : value)));
    }

    void tell(const char* signal, const QVariantList& arguments) {
        auto message = QDBusMessage::createSignal(path, interface, signal);
        message.setArguments(arguments);
        connection.send(message);
    }

    QVariantMap values;

  private:
    QDBusConnection connection;
    QString name;
    QString path;
    QString interface;
};

class DesktopSettingsTest : public QtBusTest {
  protected:
    ~DesktopSettingsTest() override { leave(); }

    void enter(const char* desktop) {
        leave();
        name.set(desktop);
        settings = std::make_unique<DesktopSettings>(connection("agent"), [this] { ++changes; });
    }

    void leave() {
        settings.reset();
        for (const auto source :
             {AppearanceSource::BarSetting, AppearanceSource::CustomaryBar, AppearanceSource::ColorScheme})
            Appearance::setName(source, std::nullopt);
        CurrentLocale::setHourCycle(HourCycle::FromLocale);
    }

    void setScheme(const QVariant& value) {
        portal.tell("SettingChanged", {"org.freedesktop.appearance", "color-scheme", boxed(value)});
    }

    void setClock(const QVariant& value) {
        portal.tell("SettingChanged", {"org.gnome.desktop.interface", "clock-format", boxed(value)});
    }

    void setDarkMode(const QVariant& value, const char* channel = "xfce4-panel") {
        xfconf.tell("PropertyChanged", {channel, "/panels/dark-mode", boxed(value)});
    }

    static bool isDark() { return Appearance::currentName() == Appearance::vibrantDark; }

    static bool becomes(bool dark) {
        return waitUntil([dark] { return isDark() == dark; });
    }

    static bool getsClock(const std::string& suffix) {
        return waitUntil([&] { return CurrentLocale::identifier() == "en_US" + suffix; });
    }

    const EnvironmentVariable language{"LC_ALL", "en_US.UTF-8"};
    EnvironmentVariable name{"XDG_CURRENT_DESKTOP", std::nullopt};
    SettingsService portal{connection("portal"), "org.freedesktop.portal.Desktop",
                           "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings"};
    SettingsService xfconf{connection("xfconf"), "org.xfce.Xfconf", "/org/xfce/Xfconf", "org.xfce.Xfconf"};
    std::unique_ptr<DesktopSettings> settings;
    int changes = 0;
};

} // namespace

TEST_F(DesktopSettingsTest, KnowTheDesktopsByTheirNames) {
    struct {
        const char* desktop;
        bool isDark;
        bool ownsClock;
    } const desktops[] = {{"GNOME", true, true},
                          {"ubuntu:GNOME", true, true},
                          {"GNOME-Classic:GNOME", false, true},
                          {"Budgie:GNOME", false, true},
                          {"Unity:Unity7:ubuntu", false, true},
                          {"X-Cinnamon", true, true},
                          {"sway", true, false},
                          {"KDE", false, false},
                          {"NOTGNOME", false, false},
                          {"", false, false}};

    portal.start();
    portal.values = {{"color-scheme", 0U}, {"clock-format", "24h"}};
    for (const auto& [desktop, dark, ownsClock] : desktops) {
        enter(desktop);
        const int before = changes;
        EXPECT_TRUE(waitUntil([&] { return changes > before; })) << "the answer of the portal";
        EXPECT_EQ(isDark(), dark) << desktop;
        EXPECT_TRUE(getsClock(ownsClock ? "@hours=h23" : "")) << desktop;
        setClock("12h");
        setScheme(1U);
        EXPECT_TRUE(waitUntil([&] { return changes > before + 1; }));
        EXPECT_TRUE(isDark()) << desktop;
        EXPECT_TRUE(getsClock(ownsClock ? "@hours=h12" : "")) << desktop;
    }
    enter("GNOME");
    EXPECT_TRUE(getsClock("@hours=h23"));
    setClock(QStringList("24h"));
    EXPECT_TRUE(getsClock("")) << "nothing that can be followed";
}

TEST_F(DesktopSettingsTest, FollowTheColourSchemeAndBeforeItTheDarkModeOfXfcesPanel) {
    enter("KDE");
    portal.start();
    xfconf.start();
    for (const QVariant& light : {QVariant(2U), QVariant(0U), QVariant(7U), QVariant("1"), QVariant(1.0)}) {
        setScheme(1U);
        EXPECT_TRUE(becomes(true));
        setScheme(light);
        EXPECT_TRUE(becomes(false)) << light.typeName();
    }
    for (const QVariant& off : {QVariant(false), QVariant("true"), QVariant(1)}) {
        setDarkMode(true);
        EXPECT_TRUE(becomes(true));
        setDarkMode(off);
        EXPECT_TRUE(becomes(false)) << off.typeName();
    }
    xfconf.values = {{"/panels/dark-mode", true}};
    enter("XFCE");
    EXPECT_TRUE(becomes(true));
    setDarkMode(false, "xsettings");
    xfconf.tell("PropertyRemoved", {"xfce4-panel", "/panels/size"});
    setDarkMode(true);
    const int before = changes;
    setScheme(2U);
    EXPECT_TRUE(waitUntil([&] { return changes >= before + 2; }));
    EXPECT_TRUE(isDark()) << "nothing of this was the panel's";
    xfconf.tell("PropertyRemoved", {"xfce4-panel", "/panels/dark-mode"});
    EXPECT_TRUE(becomes(false));
}

} // namespace velloren
