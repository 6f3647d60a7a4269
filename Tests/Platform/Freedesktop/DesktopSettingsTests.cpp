#include "Platform/Desktop/Appearance.h"
#include "Platform/Foundation/CurrentLocale.h"
#include "Platform/Freedesktop/Session/DesktopSettings.h"
#include "Tests/Platform/Freedesktop/QtBusTest.h"

namespace velloren {

namespace {

class DesktopSettingsTest : public QtBusTest {
  protected:
    ~DesktopSettingsTest() override { leave(); }

    void startServices() {
        services.start("org.freedesktop.portal.Desktop", portalPath);
        services.start("org.xfce.Xfconf", xfconfPath);
    }

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
        tellOfSetting({"org.freedesktop.appearance", "color-scheme", boxed(value)});
    }

    void setClock(const QVariant& value) {
        tellOfSetting({"org.gnome.desktop.interface", "clock-format", boxed(value)});
    }

    void setDarkMode(const QVariant& value, const char* channel = "xfce4-panel") {
        tellOfPanels("PropertyChanged", {channel, "/panels/dark-mode", boxed(value)});
    }

    void tellOfSetting(const QVariantList& arguments) {
        services.send(portalPath, "org.freedesktop.portal.Settings", "SettingChanged", arguments);
    }

    void tellOfPanels(const char* signal, const QVariantList& arguments) {
        services.send(xfconfPath, "org.xfce.Xfconf", signal, arguments);
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
    const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
    const QString xfconfPath = QStringLiteral("/org/xfce/Xfconf");
    QVariantMap values; ///< by the last part of their names
    FakeService services{connection("services"), [this](const QDBusMessage& call) {
                             const QVariant value = values.value(call.arguments().value(1).toString());
                             const bool isPortal =
                                 call.member() == "Read"; // one variant too many, as they do
                             return value.isValid() ? boxed(isPortal ? boxed(value) : value) : value;
                         }};
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

    startServices();
    values = {{"color-scheme", 0U}, {"clock-format", "24h"}};
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
    startServices();
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
    values = {{"/panels/dark-mode", true}};
    enter("XFCE");
    EXPECT_TRUE(becomes(true));
    setDarkMode(false, "xsettings");
    tellOfPanels("PropertyRemoved", {"xfce4-panel", "/panels/size"});
    setDarkMode(true);
    const int before = changes;
    setScheme(2U);
    EXPECT_TRUE(waitUntil([&] { return changes >= before + 2; }));
    EXPECT_TRUE(isDark()) << "nothing of this was the panel's";
    tellOfPanels("PropertyRemoved", {"xfce4-panel", "/panels/dark-mode"});
    EXPECT_TRUE(becomes(false));
}

} // namespace velloren
