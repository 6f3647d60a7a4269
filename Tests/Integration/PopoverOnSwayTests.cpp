#include "Tests/Support/SwayDesktop.h"

#include <gtest/gtest.h>

namespace velloren {

namespace {

constexpr QPoint elsewhere(300, 500);

/// The agent on a desktop whose compositor has a layer shell; nobody is logged in, so that the popover is
/// small.
class PopoverOnSway : public ::testing::Test {
  protected:
    ~PopoverOnSway() override {
        if (HasFailure() && desktop)
            desktop->screen().save(QStringLiteral("PopoverOnSway.png"));
    }

    void startDesktop(const SwayOptions& options = {}) {
        agent.reset();
        desktop.emplace(options);
        agent = desktop->start(VELLOREN_BINARIES "/velloren-menu");
        ASSERT_TRUE(SwayDesktop::waitUntil([this] { return icon().has_value(); })) << agent->output();
    }

    [[nodiscard]] std::optional<QRect> icon() const { return desktop->icon(); }

    bool opens() {
        return SwayDesktop::waitUntil([this] { return desktop->popover().has_value(); });
    }

    bool closes() {
        return SwayDesktop::waitUntil([this] { return !desktop->popover(); });
    }

    void openPopover() {
        const auto place = icon();
        ASSERT_TRUE(place);
        iconPlace = place->center();
        desktop->click(iconPlace);
        ASSERT_TRUE(opens()) << agent->output();
    }

    /// Whether the popover's grey begins past the bar beside the icon.
    bool arrowIsAtIcon(QPoint towardsPopover) {
        const QPoint inArrow = iconPlace + towardsPopover * (SwayDesktop::barThickness / 2 + 6);
        return SwayDesktop::waitUntil(
            [&] { return desktop->screen().pixelColor(inArrow) == QColor(236, 236, 236); });
    }

    /// How often the popover was opened: a flicker counts, too.
    [[nodiscard]] qsizetype openings() const {
        return QString::fromStdString(agent->output()).count(QStringLiteral("viewWillAppear(),"));
    }

    std::optional<SwayDesktop> desktop;
    std::unique_ptr<Process> agent;
    QPoint iconPlace;
};

} // namespace

TEST_F(PopoverOnSway, StandsAtTheBarWithItsArrowAtTheIcon) {
    struct Case {
        SwayOptions options;
        int scale;
        QPoint towardsPopover;
    };

    const std::string twice = "output * scale 2";
    for (const Case& each :
         {Case{{"top"}, 1, {0, 1}}, Case{{"bottom"}, 1, {0, -1}}, Case{{"left"}, 1, {1, 0}},
          Case{{"right"}, 1, {-1, 0}}, Case{{"bottom", twice}, 2, {0, -1}}}) {
        SCOPED_TRACE(each.options.barSide + std::to_string(each.scale));
        startDesktop(each.options);
        ASSERT_NO_FATAL_FAILURE(openPopover());
        EXPECT_TRUE(arrowIsAtIcon(each.towardsPopover * each.scale));
    }
}

TEST_F(PopoverOnSway, ClosesOnAPressElsewhereAndOnTheIconAndByEscapeAlone) {
    startDesktop();
    const std::vector<std::function<void()>> endings{
        [this] { desktop->click(elsewhere, 1); }, [this] { desktop->click(elsewhere, 3); },
        [this] { desktop->click(iconPlace); }, [this] { desktop->type("Escape"); }};
    for (const auto& end : endings) {
        ASSERT_NO_FATAL_FAILURE(openPopover());
        desktop->click(elsewhere, 2);
        desktop->moveTo(desktop->popover()->center());
        EXPECT_TRUE(desktop->popover());
        end();
        EXPECT_TRUE(closes());
        EXPECT_FALSE(desktop->popover());
    }
    EXPECT_EQ(openings(), qsizetype(endings.size()));
}

TEST_F(PopoverOnSway, HasItsMenuAtItsButton) {
    startDesktop();
    for (const bool byKey : {false, true}) {
        ASSERT_NO_FATAL_FAILURE(openPopover());
        const QRect popover = *desktop->popover();
        const QPoint button = popover.bottomRight() - QPoint(24, 23);
        desktop->click(button);
        const QPoint belowPopover(button.x() - 10, popover.bottom() + 30);
        EXPECT_TRUE(SwayDesktop::waitUntil(
            [&] { return desktop->screen().pixelColor(belowPopover) == QColor(Qt::white); }));
        byKey ? desktop->type("Escape") : desktop->click(elsewhere);
        EXPECT_TRUE(SwayDesktop::waitUntil(
            [&] { return desktop->screen().pixelColor(belowPopover) != QColor(Qt::white); }));
        EXPECT_TRUE(desktop->popover()) << "to dismiss the menu is all that happened";
        desktop->click(elsewhere);
        EXPECT_TRUE(closes());
    }
}

TEST_F(PopoverOnSway, StaysInReachOverOtherWindowsAndShowsAboveAFullscreenOne) {
    startDesktop({"top", "for_window [app_id=\".*\"] fullscreen enable"});
    ASSERT_NO_FATAL_FAILURE(openPopover());
    EXPECT_TRUE((desktop->click(elsewhere), closes()));
    const auto other = desktop->start(VELLOREN_BINARIES "/velloren-main");
    ASSERT_TRUE(SwayDesktop::waitUntil([this] { return !icon(); })) << other->output();
    EXPECT_EQ(desktop->run({VELLOREN_BINARIES "/velloren-menu"}), 0) << "the one that runs is to show itself";
    ASSERT_TRUE(arrowIsAtIcon({0, 1})) << "where the icon was";
    desktop->moveTo(elsewhere);
    desktop->moveTo(iconPlace + QPoint(0, 60));
    EXPECT_TRUE(arrowIsAtIcon({0, 1})) << "where focus follows the pointer, such a way takes it away";
}

} // namespace velloren
