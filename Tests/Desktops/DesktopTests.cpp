#include "Tests/Desktops/HostDesktop.h"
#include "Tests/Desktops/Pictures.h"

#include <gtest/gtest.h>

#include <cmath>
#include <csignal>
#include <set>

namespace velloren {

namespace {

enum class Click { ShowsMenu, OpensPopover };
enum class Ability { OneScreen, Place, Bottom, Dark, ScaleTwo, TwoScreens };

constexpr QPoint elsewhere{300, 500};

/// A host of icons, in one kind of session.
struct Host {
    std::string name; ///< as `host` knows it
    Click secondary = Click::ShowsMenu;
    Click primary = Click::OpensPopover; ///< where it is for the menu, a double click opens the popover
    std::set<Ability> lacks{};
};

const std::vector<Host> lightHosts{
    {"xfce"},
    {"waybar"},
    {"lxqt"},
    {"mate"},
    {"tint2", Click::OpensPopover},
    {"trayer", Click::OpensPopover},
    {"i3bar", Click::OpensPopover},
    // The compositor centres the windows of X programs.
    {"xwayland",
     Click::ShowsMenu,
     Click::OpensPopover,
     {Ability::Place, Ability::ScaleTwo, Ability::TwoScreens}},
};

const std::vector<Host> heavyHosts{
    {"plasma"},
    {"gnome", Click::ShowsMenu, Click::ShowsMenu, {Ability::Bottom, Ability::TwoScreens}},
    {"cinnamon"},
};

auto hostsWith(Ability ability, std::vector<Host> hosts) {
    std::erase_if(hosts, [&](const Host& host) { return host.lacks.contains(ability); });
    return ::testing::ValuesIn(hosts);
}

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

    void startBar(const Bar& bar) {
        scale = bar.scale;
        side = bar.side;
        desktop.emplace(GetParam().name, bar);
        desktop->startBar();
        withoutIcon = desktop->picture();
        ASSERT_FALSE(withoutIcon.isNull());
    }

    void startAgent() {
        const auto variables = desktop->programEnvironment();
        ASSERT_EQ(desktop->start(VELLOREN_BINARIES "/velloren-main", {"--make-demonstration-store"})->wait(),
                  0);
        agent = desktop->start(VELLOREN_BINARIES "/velloren-menu", {}, variables);
        ASSERT_TRUE(desktop->waitUntil([this] {
            return desktop->bus().hasOwner("com.velloren.velloren-mac.menu");
        })) << agent->output();
    }

    /// Waits for the icon; `closed` is then the picture with it.
    void waitForIcon() {
        desktop->moveTo(elsewhere); // a bar has tool tips
        closed = desktop->picture([this](const QImage& now) { return iconIn(now).has_value(); });
        ASSERT_FALSE(closed.isNull()) << "no icon";
        icon = *iconIn(closed);
    }

    [[nodiscard]] std::optional<QRect> iconIn(const QImage& now) const {
        const auto place = difference(withoutIcon, now, desktop->barArea());
        return place && place->width() >= 10 && place->width() <= 48 * scale ? place : std::nullopt;
    }

    /// What the bubble covers, arrow included; none while it is closed.
    [[nodiscard]] std::optional<QRect> popoverIn(const QImage& now) const {
        const auto bubble = boundsWithin(now.rect(), [&](QPoint at) {
            return now.pixel(at) == qRgb(236, 236, 236) && closed.pixel(at) != now.pixel(at);
        });
        return bubble && bubble->width() > 300 * scale ? bubble : std::nullopt;
    }

    void openPopover() {
        desktop->moveTo(icon.center());
        const char* times = GetParam().primary == Click::ShowsMenu ? "2" : "1";
        desktop->run({"xdotool", "click", "--repeat", times, "--delay", "50", "1"});
        open = desktop->picture(
            [this](const QImage& now) { return popoverIn(now).has_value() && highlightIn(now).has_value(); });
        ASSERT_FALSE(open.isNull()) << "no popover, or the icon has no highlight";
        popover = *popoverIn(open);
    }

    bool closes() {
        return desktop->waitUntil([this] {
            const QImage now = desktop->screen();
            return !popoverIn(now) && !highlightIn(now);
        });
    }

    /// What the highlight of the icon covers; none while it has none.
    [[nodiscard]] std::optional<QRect> highlightIn(const QImage& now) const {
        return boundsWithin(icon.adjusted(-10 * scale, -10 * scale, 10 * scale, 10 * scale) & now.rect(),
                            [&](QPoint at) {
                                const QColor color = now.pixelColor(at);
                                return color.blue() > 200 && color.red() < 100; // bars blend it a little
                            });
    }

    /// Chooses the last entry of the menu that a bar shows at the icon.
    void chooseLastOfMenu() {
        const QRect beside = desktop->screenArea().adjusted(0, 56, 0, -56); // bars cast shadows
        const auto menuIn = [&](const QImage& now) {
            return boundsWithin(beside, [&](QPoint at) {
                return closed.pixel(at) != now.pixel(at) && luminance(now.pixelColor(at)) > 0.5;
            });
        };
        const QImage shown = desktop->picture([&](const QImage& now) { return menuIn(now).has_value(); });
        ASSERT_FALSE(shown.isNull()) << "no menu";
        // Of a dark menu only the texts are bright.
        const QRect menu = *menuIn(shown);
        desktop->click(GetParam().primary == Click::ShowsMenu
                           ? menu.bottomLeft() + QPoint(10, -5)
                           : QPoint(menu.center().x(), menu.bottom() - 16));
    }

    /// The outermost row of the popover, smoothed pixels included, where it is brighter than what is behind
    /// it.
    [[nodiscard]] std::optional<QRect> tipOfArrow() const {
        const auto isBrighter = [this](QPoint at) {
            return luminance(open.pixelColor(at)) > luminance(closed.pixelColor(at)) + 0.2;
        };
        const bool below = side == Side::Top;
        const QRect edge(popover.left(), below ? popover.top() - 2 * scale : popover.bottom(),
                         popover.width(), 2 * scale + 1);
        auto tip = boundsWithin(edge, isBrighter);
        if (tip)
            below ? tip->setBottom(tip->top()) : tip->setTop(tip->bottom());
        return tip ? boundsWithin(*tip, isBrighter) : tip;
    }

    /// Whether the popover stands beside the icon, all of it on its screen, with its arrow at the icon's
    /// middle.
    void expectPopoverAtIcon() const {
        EXPECT_TRUE(desktop->screenArea().contains(popover));
        const auto highlight = highlightIn(open);
        if (GetParam().lacks.contains(Ability::Place))
            return;
        const bool below = side == Side::Top;
        const int gap = below ? popover.top() - highlight->bottom() : highlight->top() - popover.bottom();
        EXPECT_GE(gap, 0);
        EXPECT_LE(gap, 16 * scale);
        const auto arrow = tipOfArrow();
        ASSERT_TRUE(arrow);
        EXPECT_LE(arrow->width(), 12 * scale) << "there is an arrow";
        EXPECT_NEAR(middle(*arrow), middle(*highlight), 2 * scale);
    }

    void expectPopoverAtIconOf(const Bar& bar) {
        startBar(bar);
        ASSERT_NO_FATAL_FAILURE(startAgent());
        ASSERT_NO_FATAL_FAILURE(waitForIcon());
        ASSERT_NO_FATAL_FAILURE(openPopover());
        expectPopoverAtIcon();
    }

    void keepPicture(const char* subject) const {
        std::filesystem::create_directories(PICTURES);
        const QRect corner(open.width() - 480 * scale, side == Side::Top ? 0 : open.height() - 400 * scale,
                           480 * scale, 400 * scale);
        open.copy(corner).save(
            QString::fromStdString(PICTURES "/" + GetParam().name + "-" + subject + ".png"));
    }

    std::optional<HostDesktop> desktop;
    std::unique_ptr<Process> agent;
    Side side = Side::Top;
    int scale = 1;
    QImage withoutIcon;
    QImage closed;
    QImage open;
    QRect icon;
    QRect popover;
};

class OnDarkBar : public OnDesktop {};

class AtScaleTwo : public OnDesktop {};

class OnTwoScreens : public OnDesktop {};

} // namespace

TEST_P(OnDesktop, ShowsItsIconToABarThatComesLateAndToTheNextOne) {
    startBar({});
    desktop->stopBar();
    ASSERT_NO_FATAL_FAILURE(startAgent());
    for (int round = 0; round < 2; ++round) {
        desktop->startBar();
        ASSERT_NO_FATAL_FAILURE(waitForIcon()) << round;
        ASSERT_NO_FATAL_FAILURE(openPopover()) << round;
        desktop->click(elsewhere);
        EXPECT_TRUE(closes());
        desktop->stopBar();
    }
}

TEST_P(OnDesktop, OpensAtItsIconAndClosesByClicksAndKeys) {
    ASSERT_NO_FATAL_FAILURE(expectPopoverAtIconOf({}));
    keepPicture("popover");
    const auto press = [this](const char* key) { desktop->type(key); };
    const std::vector<std::function<void()>> endings{
        [&] { desktop->click(elsewhere, 1); }, [&] { desktop->click(elsewhere, 3); },
        [&] { desktop->click(icon.center()); }, [&] { press("Escape"); },
        [&] {
            press("Tab");
            EXPECT_FALSE(
                desktop
                    ->picture([&](const QImage& now) { return difference(open, now, popover).has_value(); })
                    .isNull())
                << "the focus is seen";
            press("Return");
        }};
    for (const auto& end : endings) {
        if (!popoverIn(desktop->screen())) {
            ASSERT_NO_FATAL_FAILURE(openPopover());
        }
        end();
        EXPECT_TRUE(closes()) << &end - endings.data();
        desktop->type("Escape"); // the desktop may have a menu of its own there
    }
    EXPECT_NE(agent->output().find("openMeeting"), std::string::npos) << "the key chose the first one";

    desktop->click(icon.center(), GetParam().primary == Click::ShowsMenu ? 1 : 3);
    if (GetParam().secondary == Click::OpensPopover) {
        EXPECT_TRUE(desktop->waitUntil([this] { return popoverIn(desktop->screen()).has_value(); }));
        return;
    }
    ASSERT_NO_FATAL_FAILURE(chooseLastOfMenu());
    EXPECT_EQ(agent->wait(), 0) << "the last entry is Quit";
    EXPECT_EQ(openings(), qsizetype(endings.size())) << "the menu came alone";
}

TEST_P(OnDarkBar, IsSeenAndOpensAboveABarAtTheBottom) {
    startBar({GetParam().lacks.contains(Ability::Bottom) ? Side::Top : Side::Bottom, Shade::Dark});
    ASSERT_NO_FATAL_FAILURE(startAgent());
    ASSERT_NO_FATAL_FAILURE(waitForIcon());
    EXPECT_LE(luminance(commonColor(withoutIcon.copy(icon))), 0.1) << "the bar is dark";
    EXPECT_TRUE(desktop->waitUntil([this] {
        return greatestContrast(desktop->screen().copy(icon.adjusted(-3, -3, 3, 3))) >= 3;
    })) << greatestContrast(desktop->screen().copy(icon.adjusted(-3, -3, 3, 3)));
    ASSERT_NO_FATAL_FAILURE(waitForIcon());
    ASSERT_NO_FATAL_FAILURE(openPopover());
    expectPopoverAtIcon();
    keepPicture("dark");
}

TEST_P(AtScaleTwo, OpensAtItsIcon) {
    expectPopoverAtIconOf({.scale = 2});
    keepPicture("scale-2");
}

TEST_P(OnTwoScreens, OpensOnTheScreenOfTheBar) {
    expectPopoverAtIconOf({.place = Place::RightScreen});
    keepPicture("two-screens");
}

INSTANTIATE_TEST_SUITE_P(Light, OnDesktop, hostsWith(Ability::OneScreen, lightHosts), nameOf);
INSTANTIATE_TEST_SUITE_P(Heavy, OnDesktop, hostsWith(Ability::OneScreen, heavyHosts), nameOf);
INSTANTIATE_TEST_SUITE_P(Light, OnDarkBar, hostsWith(Ability::Dark, lightHosts), nameOf);
INSTANTIATE_TEST_SUITE_P(Heavy, OnDarkBar, hostsWith(Ability::Dark, heavyHosts), nameOf);
INSTANTIATE_TEST_SUITE_P(Light, AtScaleTwo, hostsWith(Ability::ScaleTwo, lightHosts), nameOf);
INSTANTIATE_TEST_SUITE_P(Heavy, AtScaleTwo, hostsWith(Ability::ScaleTwo, heavyHosts), nameOf);
INSTANTIATE_TEST_SUITE_P(Light, OnTwoScreens, hostsWith(Ability::TwoScreens, lightHosts), nameOf);
INSTANTIATE_TEST_SUITE_P(Heavy, OnTwoScreens, hostsWith(Ability::TwoScreens, heavyHosts), nameOf);

} // namespace velloren
