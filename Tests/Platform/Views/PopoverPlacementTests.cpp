#include "Platform/Views/PopoverPlacement.h"

#include <gtest/gtest.h>

namespace velloren {

namespace {

constexpr QRect screen(0, 0, 1280, 800);
constexpr QSize content(320, 270);

QRect iconAt(int x, int y) {
    QRect icon(0, 0, 28, 22);
    icon.moveCenter({x, y});
    return icon;
}

int tipOnScreen(const PopoverPlacement& placement) {
    const bool horizontal = placement.arrowEdge == ArrowEdge::Top || placement.arrowEdge == ArrowEdge::Bottom;
    return placement.arrowCentre + (horizontal ? placement.frame.left() : placement.frame.top());
}

} // namespace

TEST(PopoverPlacement, HangsBelowAPanelAtTheTopAndPointsAtTheIcon) {
    const QRect available(0, 30, 1280, 770);
    const auto placement = placePopover(iconAt(640, 15), content, screen, available);
    EXPECT_EQ(placement.arrowEdge, ArrowEdge::Top);
    EXPECT_EQ(placement.frame, QRect(480, 30, 320, 278));
    EXPECT_EQ(tipOnScreen(placement), 640);
}

TEST(PopoverPlacement, StandsOnAPanelAtTheBottom) {
    const QRect available(0, 0, 1280, 770);
    const auto placement = placePopover(iconAt(640, 785), content, screen, available);
    EXPECT_EQ(placement.arrowEdge, ArrowEdge::Bottom);
    EXPECT_EQ(placement.frame.bottom(), 769);
    EXPECT_EQ(tipOnScreen(placement), 640);
}

TEST(PopoverPlacement, StandsBesidePanelsAtTheSides) {
    const auto left = placePopover(iconAt(20, 400), content, screen, QRect(40, 0, 1240, 800));
    EXPECT_EQ(left.arrowEdge, ArrowEdge::Left);
    EXPECT_EQ(left.frame.left(), 40);
    EXPECT_EQ(tipOnScreen(left), 400);

    const auto right = placePopover(iconAt(1260, 400), content, screen, QRect(0, 0, 1240, 800));
    EXPECT_EQ(right.arrowEdge, ArrowEdge::Right);
    EXPECT_EQ(right.frame.right(), 1239);
    EXPECT_EQ(tipOnScreen(right), 400);
}

TEST(PopoverPlacement, StaysInsideTheScreenAndKeepsItsArrowOffTheCorner) {
    const QRect available(0, 30, 1280, 770);
    const auto placement = placePopover(iconAt(1270, 15), content, screen, available);
    EXPECT_LE(placement.frame.right(), available.right());
    EXPECT_LE(placement.arrowCentre + PopoverMetrics::arrowHalfWidth + PopoverMetrics::cornerRadius,
              placement.frame.width());
}

TEST(PopoverPlacement, TakesTheNearerEdgeWithoutAPanel) {
    EXPECT_EQ(placePopover(iconAt(640, 100), content, screen, screen).arrowEdge, ArrowEdge::Top);
    const auto low = placePopover(iconAt(640, 700), content, screen, screen);
    EXPECT_EQ(low.arrowEdge, ArrowEdge::Bottom);
    EXPECT_LT(low.frame.bottom(), 700);
}

TEST(PopoverPlacement, KeepsToTheScreenOfTheIconOnAWideDesktop) {
    const QRect second(1280, 0, 1920, 1080);
    const auto placement = placePopover(iconAt(1290, 15), content, second, second.adjusted(0, 30, 0, 0));
    EXPECT_GE(placement.frame.left(), second.left());
}

TEST(PopoverPlacement, StartsAtTheTopOfAScreenItDoesNotFit) {
    const QRect tiny(0, 0, 200, 100);
    const auto placement = placePopover(iconAt(190, 10), content, tiny, tiny);
    EXPECT_EQ(placement.frame.left(), PopoverMetrics::screenGap);
}

} // namespace velloren
