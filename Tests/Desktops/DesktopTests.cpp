#include "Tests/Support/HostDesktop.h"
#include "Tests/Support/Pictures.h"

#include <gtest/gtest.h>

#include <csignal>
#include <set>

namespace velloren {

namespace {

enum class Click { ShowsMenu, OpensPopover, DependsOnTray };
/// As fast as no hand can, or as one does: each shows what the other hides.
enum class Press { Quick, Held };
enum class Ability { Place, QuickClicks, Bottom, IconAlone, EndOfBar };

constexpr QPoint elsewhere{300, 500};
constexpr QPoint emptyPartOfBar{300, 16};
constexpr QRgb grey = qRgb(236, 236, 236); // the popover's

/// A host of icons, in one kind of session.
struct Host {
    std::string name; ///< as `host` knows it
    Click secondary = Click::ShowsMenu;
    Click primary = Click::OpensPopover; ///< where it is for the menu, a double click opens the popover
    std::set<Ability> lacks{};
};

const Host waybar{"waybar"};
const Host labwcWaybar{"labwc_waybar"};
const std::vector<Host> waylandHosts{
    waybar, {"swaybar", Click::OpensPopover}, labwcWaybar, {"labwc_xfce"}, {"labwc_lxqt"},
};
const Host plasmaWayland{"plasma_wayland"};

// The compositor centres the windows of X programs.
const Host xwayland{
    "xwayland", Click::ShowsMenu, Click::OpensPopover, {Ability::Place, Ability::QuickClicks}};

const std::vector<Host> lightHosts{
    {"xfce"},
    {"lxqt"},
    {"mate"},
    {"tint2", Click::OpensPopover},
    {"trayer", Click::OpensPopover},
    {"i3bar", Click::OpensPopover},
    {"lxpanel", Click::OpensPopover},
    {"polybar", Click::OpensPopover},
    {"awesome", Click::OpensPopover},
    xwayland,
};

const std::vector<Host> heavyHosts{
    {"plasma"},
    plasmaWayland,
    // The click that closes the popover is one for the menu, too.
    {"gnome", Click::ShowsMenu, Click::ShowsMenu, {Ability::Bottom, Ability::IconAlone}},
    {"gnome_wayland",
     Click::ShowsMenu,
     Click::ShowsMenu,
     {Ability::Bottom, Ability::EndOfBar, Ability::QuickClicks}},
    {"cinnamon"},
    {"budgie", Click::DependsOnTray}, // an early one's takes windows in, which have no menu
};

/// How a failing test names the host.
void PrintTo(const Host& host, std::ostream* stream) {
    *stream << host.name;
}

std::string nameOf(const ::testing::TestParamInfo<Host>& info) {
    return info.param.name;
}

double middle(QRect area) {
    return (area.left() + area.right()) / 2.0;
}

/// The agent with a bar, and what a look at the screen tells of the two.
class OnDesktop : public ::testing::TestWithParam<Host> {
  protected:
    void SetUp() override {
        if (const auto reason = HostDesktop::reasonForNone(GetParam().name))
            GTEST_SKIP() << *reason;
    }

    ~OnDesktop() override {
        if (HasFailure() && desktop) {
            const std::string file = GetParam().name + "-failed.png";
            desktop->screen().save(QString::fromStdString(file));
            std::fprintf(stderr, "--- the screen is in %s; the agent's log\n%s",
                         std::filesystem::absolute(file).c_str(), agent ? agent->output().c_str() : "");
        }
    }

    /// How often the popover was opened.
    [[nodiscard]] qsizetype openings() const {
        return QString::fromStdString(agent->output()).count(QStringLiteral("viewWillAppear(),"));
    }

    /// So many points of a picture, in pixels of the screen.
    [[nodiscard]] int pixels(int points) const { return int(std::lround(points * scale)); }

    /// Where the tray is.
    [[nodiscard]] QRect endOfBar() const {
        constexpr int thickest = 48;
        return {withoutBar.width() * 3 / 4, 0, withoutBar.width() / 4, pixels(thickest)};
    }

    /// A bar that is the session's own looks the same with its tray and without.
    [[nodiscard]] bool hasBar(const QImage& now) const {
        return GetParam().lacks.contains(Ability::EndOfBar) ||
               difference(withoutBar, now, endOfBar()).has_value();
    }

    void startDesktop(const Bar& bar) {
        scale = bar.scale;
        desktop.emplace(GetParam().name, bar);
        withoutBar = desktop->picture([](const QImage&) { return true; });
    }

    void startBar() {
        desktop->startBar();
        withoutIcon = desktop->picture([this](const QImage& now) { return hasBar(now); });
        ASSERT_FALSE(withoutIcon.isNull()) << "no bar";
    }

    void stopBar() {
        desktop->stopBar();
        if (!GetParam().lacks.contains(Ability::EndOfBar)) {
            ASSERT_TRUE(desktop->waitUntil([this] { return !hasBar(desktop->look()); }));
        }
    }

    void startAgent() {
        ASSERT_EQ(desktop->start(VELLOREN_BINARIES "/velloren-main", {"--make-demonstration-store"})->wait(),
                  0);
        agent = desktop->start(VELLOREN_BINARIES "/velloren-menu", {}, desktop->programEnvironment());
        ASSERT_TRUE(desktop->waitUntil([this] {
            return desktop->bus().hasOwner("com.velloren.velloren-mac.menu");
        })) << agent->output();
    }

    /// Waits for the icon; `closed` is then the picture with it.
    void waitForIcon() {
        desktop->pointAt(elsewhere); // a bar has tool tips
        closed = desktop->picture([this](const QImage& now) { return iconIn(now).has_value(); });
        ASSERT_FALSE(closed.isNull()) << "no icon";
        icon = *iconIn(closed);
    }

    void startAll(const Bar& bar) {
        startDesktop(bar);
        ASSERT_NO_FATAL_FAILURE(startBar());
        ASSERT_NO_FATAL_FAILURE(startAgent());
        ASSERT_NO_FATAL_FAILURE(waitForIcon());
    }

    [[nodiscard]] std::optional<QRect> iconIn(const QImage& now) const {
        const auto place = difference(withoutIcon, now, endOfBar());
        return place && place->width() >= 10 && place->width() <= pixels(48) ? place : std::nullopt;
    }

    /// What the highlight of the icon covers; none while it has none.
    [[nodiscard]] std::optional<QRect> highlightIn(const QImage& now) const {
        const int around = pixels(10);
        return boundsWithin(icon.adjusted(-around, -around, around, around) & now.rect(),
                            [&](QPoint at) { return isHighlight(now.pixelColor(at)); });
    }

    /// What the bubble covers, arrow included; none while it is closed.
    [[nodiscard]] std::optional<QRect> popoverIn(const QImage& now) const {
        const auto bubble = boundsWithin(now.rect(), [&](QPoint at) {
            // The icon itself may have that colour.
            return now.pixel(at) == grey && closed.pixel(at) != now.pixel(at) && !icon.contains(at);
        });
        return bubble && bubble->width() > pixels(200) && bubble->height() > pixels(100) ? bubble
                                                                                         : std::nullopt;
    }

    [[nodiscard]] bool isOpen() const { return popoverIn(desktop->look()).has_value(); }

    void clickIcon(Press press, int times = 1) {
        desktop->pointAt(icon.center());
        std::string command = "xdotool";
        for (; times > 0; --times)
            command += press == Press::Quick ? " click 1 sleep 0.05" : " mousedown 1 sleep 0.1 mouseup 1";
        desktop->run({"sh", "-c", command});
    }

    void openPopover() {
        clickIcon(openings() % 2 == 0 ? Press::Quick : Press::Held,
                  GetParam().primary == Click::ShowsMenu ? 2 : 1);
        // Long for a user, but the fault it is for takes ten: to wait for an event that never comes. The rest
        // is for busy machines.
        EXPECT_TRUE(desktop->waitUntil([this] { return isOpen(); }, std::chrono::seconds(5)))
            << "it takes its time";
        const auto isOpen = [this](const QImage& now) { return popoverIn(now) && highlightIn(now); };
        ASSERT_FALSE(desktop->picture(isOpen).isNull()) << "no popover, or the icon has no highlight";
        desktop->pointAt(elsewhere); // the pointer covers a part of it
        open = desktop->picture(isOpen);
        ASSERT_FALSE(open.isNull()) << "the way of the pointer closed it";
        popover = *popoverIn(open);
    }

    bool closes() {
        const auto isClosed = [this](const QImage& now) {
            return !popoverIn(now) && !highlightIn(now) &&
                   (!GetParam().lacks.contains(Ability::QuickClicks) || leavesClicksToOthers());
        };
        return !desktop->picture(isClosed).isNull();
    }

    /// A click right after the one that closed the popover is taken for that one's second half.
    [[nodiscard]] bool leavesClicksToOthers() {
        return desktop
                   ->start("xdotool", {"search", "--onlyvisible", "--class", "velloren-menu"},
                           desktop->programEnvironment())
                   ->wait() != 0;
    }

    [[nodiscard]] bool showsMenu() const {
        return GetParam().secondary == Click::DependsOnTray
                   ? desktop->bus().hasOwner("org.kde.StatusNotifierWatcher")
                   : GetParam().secondary == Click::ShowsMenu;
    }

    /// Chooses the last entry of the menu that a bar shows at the icon.
    void chooseLastOfMenu() {
        const QRect beside = closed.rect().adjusted(0, 56, 0, -56); // bars cast shadows
        const auto menuIn = [&](const QImage& now) {
            return boundsWithin(beside, [&](QPoint at) {
                return closed.pixel(at) != now.pixel(at) && luminance(now.pixelColor(at)) > 0.5;
            });
        };
        const QImage shown = desktop->picture([&](const QImage& now) { return menuIn(now).has_value(); });
        ASSERT_FALSE(shown.isNull()) << "no menu";
        // Of a dark menu only the texts are bright.
        const QRect menu = *menuIn(shown);
        desktop->press(GetParam().primary == Click::ShowsMenu
                           ? menu.bottomLeft() + QPoint(10, -5)
                           : QPoint(menu.center().x(), menu.bottom() - 16));
    }

    /// The outermost row of the popover, smoothed pixels included, where it is brighter than what is behind
    /// it.
    [[nodiscard]] std::optional<QRect> tipOfArrow() const {
        const auto isBrighter = [this](QPoint at) {
            return luminance(open.pixelColor(at)) > luminance(closed.pixelColor(at)) + 0.2;
        };
        const auto tip = boundsWithin(popover.adjusted(0, -pixels(2), 0, 0), isBrighter);
        return tip ? boundsWithin({tip->topLeft(), QSize(tip->width(), 1)}, isBrighter) : tip;
    }

    /// Whether the popover stands beside the icon, all of it on its screen, with its arrow at the icon's
    /// middle.
    void expectPopoverAtIcon() const {
        EXPECT_TRUE(open.rect().adjusted(1, 1, -1, -1).contains(popover));
        if (GetParam().lacks.contains(Ability::Place))
            return;
        const QRect highlight = *highlightIn(open);
        EXPECT_GT(popover.top(), highlight.bottom());
        EXPECT_LE(popover.top(), highlight.bottom() + pixels(16));
        const auto arrow = tipOfArrow();
        ASSERT_TRUE(arrow);
        EXPECT_LE(arrow->width(), pixels(12)) << "there is an arrow";
        EXPECT_NEAR(middle(*arrow), middle(highlight), pixels(3)) << "in a corner it leans";
    }

    void expectIconIsSeen() {
        const auto contrast = [&] {
            return greatestContrast(desktop->look().copy(icon.adjusted(-3, -3, 3, 3)));
        };
        EXPECT_TRUE(desktop->waitUntil([&] { return contrast() >= 3; })) << contrast();
    }

    /// Keeps a picture of it, too.
    void expectPopoverAtIconOf(const Bar& bar, const std::string& subject) {
        ASSERT_NO_FATAL_FAILURE(startAll(bar));
        expectIconIsSeen();
        ASSERT_NO_FATAL_FAILURE(waitForIcon()); // in its colour for this bar
        ASSERT_NO_FATAL_FAILURE(openPopover());
        expectPopoverAtIcon();
        std::filesystem::create_directories(PICTURES);
        const QRect corner(open.width() - pixels(480), 0, pixels(480), pixels(400));
        const QRect shown = GetParam().lacks.contains(Ability::Place) ? open.rect() : corner;
        desktop->asShown(open.copy(shown))
            .save(QString::fromStdString(PICTURES "/" + GetParam().name + "-" + subject + ".png"));
    }

    std::optional<HostDesktop> desktop;
    std::unique_ptr<Process> agent;
    double scale = 1;
    QImage withoutBar;
    QImage withoutIcon;
    QImage closed;
    QImage open;
    QRect icon;
    QRect popover;
};

class AtScaleOneAndAHalf : public OnDesktop {};

class OnLayerShell : public OnDesktop {};

class OnWayland : public OnDesktop {};

} // namespace

TEST_P(OnDesktop, ShowsItsIconToABarThatComesLateAndToTheNextOne) {
    startDesktop({});
    ASSERT_NO_FATAL_FAILURE(startBar());
    for (int round = 0; round < 2; ++round) {
        ASSERT_NO_FATAL_FAILURE(stopBar());
        if (!agent) {
            ASSERT_NO_FATAL_FAILURE(startAgent());
        }
        desktop->startBar();
        ASSERT_NO_FATAL_FAILURE(waitForIcon()) << round;
        ASSERT_NO_FATAL_FAILURE(openPopover()) << round;
        desktop->press(elsewhere);
        EXPECT_TRUE(closes());
    }
}

TEST_P(OnDesktop, OpensAtItsIconAndClosesByClicksAndKeys) {
    ASSERT_NO_FATAL_FAILURE(expectPopoverAtIconOf({}, "popover"));
    std::vector<std::function<void()>> endings{
        [&] { desktop->press(elsewhere, 1); }, [&] { desktop->press(elsewhere, 3); },
        [&] { desktop->press(emptyPartOfBar); }, [&] { desktop->type("Escape"); },
        [&] {
            desktop->type("Tab");
            const auto showsFocus = [&](const QImage& now) {
                return difference(open, now, popover).has_value();
            };
            EXPECT_FALSE(desktop->picture(showsFocus).isNull()) << "the focus is seen";
            desktop->type("Return");
        }};
    if (!GetParam().lacks.contains(Ability::IconAlone))
        endings.insert(endings.begin(), {[&] { clickIcon(Press::Quick); }, [&] { clickIcon(Press::Held); }});
    for (const auto& end : endings) {
        if (!isOpen()) {
            ASSERT_NO_FATAL_FAILURE(openPopover());
        }
        desktop->type("a");
        desktop->press(elsewhere, 2); // some desktops take the keyboard then
        desktop->press(popover.topLeft() + QPoint(40, 46));
        EXPECT_TRUE(isOpen()) << "such input is for others";
        end();
        ASSERT_TRUE(closes()) << &end - endings.data();
        desktop->type("Escape"); // the desktop may have a menu of its own there
    }
    EXPECT_NE(agent->output().find("openMeeting"), std::string::npos) << "the key chose the first one";

    EXPECT_EQ(openings(), qsizetype(endings.size())) << "no flicker";

    desktop->press(icon.center(), GetParam().primary == Click::ShowsMenu ? 1 : 3);
    if (!showsMenu()) {
        EXPECT_TRUE(desktop->waitUntil([this] { return isOpen(); }));
        return;
    }
    ASSERT_NO_FATAL_FAILURE(chooseLastOfMenu());
    EXPECT_EQ(agent->wait(), 0) << "the last entry is Quit";
    EXPECT_EQ(openings(), qsizetype(endings.size())) << "the menu came alone";
}

TEST_P(OnDesktop, IsSeenAndOpensAboveADarkBarAtTheBottom) {
    const Side side = GetParam().lacks.contains(Ability::Bottom) ? Side::Top : Side::Bottom;
    expectPopoverAtIconOf({side, Shade::Dark}, "dark");
    EXPECT_LE(luminance(commonColor(withoutIcon.copy(icon))), 0.1) << "the bar is dark";
}

TEST_P(OnDesktop, OpensAtItsIconAtScaleTwo) {
    expectPopoverAtIconOf({.scale = 2}, "scale-2");
}

TEST_P(OnDesktop, OpensOnTheScreenOfTheBar) {
    expectPopoverAtIconOf({.screens = Screens::TwoSideBySide}, "two-screens");
}

TEST_P(AtScaleOneAndAHalf, OpensAtItsIcon) {
    expectPopoverAtIconOf({.scale = 1.5}, "scale-1.5");
}

TEST_P(OnLayerShell, StandsAtABarAtTheSide) {
    for (const Side side : {Side::Left, Side::Right}) {
        agent.reset();
        expectPopoverAtIconOf({.side = side}, "side");
    }
}

TEST_P(OnWayland, HasItsMenuAtItsButton) {
    ASSERT_NO_FATAL_FAILURE(startAll({}));
    ASSERT_NO_FATAL_FAILURE(openPopover());
    const QPoint button = popover.bottomRight() - QPoint(24, 23);
    const QPoint inMenu(button.x() - 10, popover.bottom() + 30);
    const auto showsMenu = [&] { return desktop->look().pixelColor(inMenu) == Qt::white; };
    for (int round = 0; round < 2; ++round) {
        desktop->press(button);
        EXPECT_TRUE(desktop->waitUntil(showsMenu));
        round == 0 ? desktop->type("Escape") : desktop->press(elsewhere);
        EXPECT_TRUE(desktop->waitUntil([&] { return !showsMenu(); }));
        EXPECT_TRUE(isOpen()) << "to dismiss the menu is all that happened";
    }
    const QRect around(button - QPoint(16, 14), button + QPoint(16, 14));
    EXPECT_TRUE(desktop->waitUntil([&] { return desktop->look().copy(around) == open.copy(around); }))
        << "the pointer has left the button";
    desktop->press(elsewhere);
    EXPECT_TRUE(closes());
}

TEST_P(OnLayerShell, StaysInReachOverOtherWindowsAndShowsAboveAFullscreenOne) {
    ASSERT_NO_FATAL_FAILURE(startAll({}));
    const auto variables = desktop->programEnvironment();
    const auto other = desktop->start(VELLOREN_BINARIES "/velloren-main", {}, variables);
    ASSERT_TRUE(desktop->waitUntil([this] { return desktop->look().copy(icon) != closed.copy(icon); }))
        << other->output();
    EXPECT_EQ(desktop->start(VELLOREN_BINARIES "/velloren-menu", {}, variables)->wait(), 0)
        << "the one that runs is to show itself";
    const auto isAtPointer = [this] { return desktop->look().pixel(elsewhere - QPoint(0, 8)) == grey; };
    ASSERT_TRUE(desktop->waitUntil(isAtPointer)) << "nobody clicked the icon";
    desktop->pointAt(icon.center());
    desktop->pointAt(elsewhere);
    EXPECT_TRUE(isAtPointer()) << "where focus follows the pointer, such a way takes it away";
}

TEST_P(OnLayerShell, ShowsNothingAndTakesNoKeysOnALockedScreen) {
    ASSERT_NO_FATAL_FAILURE(startAll({}));
    ASSERT_NO_FATAL_FAILURE(openPopover());
    const auto variables = desktop->programEnvironment();
    const auto locker = desktop->start("swaylock", {"--no-unlock-indicator", "--color", "402040"}, variables);
    const auto isLocked = [this] { return desktop->look().pixelColor(elsewhere) == QColor(0x402040); };
    ASSERT_TRUE(desktop->waitUntil(isLocked)) << locker->output();
    EXPECT_FALSE(isOpen());
    // The compositor tells nobody; until the agent knows, the one that was open is raised.
    ASSERT_TRUE(desktop->waitUntil([&] {
        desktop->start(VELLOREN_BINARIES "/velloren-menu", {}, variables)->wait();
        return openings() == 2;
    }));
    desktop->type("Tab");
    desktop->type("Return");
    EXPECT_FALSE(isOpen());
    locker->signal(SIGUSR1);
    EXPECT_TRUE(desktop->waitUntil([this] { return isOpen(); }))
        << "the former one is closed, this one waited";
    EXPECT_EQ(agent->output().find("openMeeting"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Light, OnDesktop, ::testing::ValuesIn(lightHosts), nameOf);
INSTANTIATE_TEST_SUITE_P(LightOnWayland, OnDesktop, ::testing::ValuesIn(waylandHosts), nameOf);
INSTANTIATE_TEST_SUITE_P(Heavy, OnDesktop, ::testing::ValuesIn(heavyHosts), nameOf);
INSTANTIATE_TEST_SUITE_P(Light, AtScaleOneAndAHalf, ::testing::ValuesIn(waylandHosts), nameOf);
INSTANTIATE_TEST_SUITE_P(Heavy, AtScaleOneAndAHalf, ::testing::Values(plasmaWayland), nameOf);
INSTANTIATE_TEST_SUITE_P(Light, OnLayerShell, ::testing::Values(waybar, labwcWaybar), nameOf);
INSTANTIATE_TEST_SUITE_P(Light, OnWayland, ::testing::Values(waybar, labwcWaybar, xwayland), nameOf);
INSTANTIATE_TEST_SUITE_P(Heavy, OnWayland, ::testing::Values(plasmaWayland), nameOf);

} // namespace velloren
