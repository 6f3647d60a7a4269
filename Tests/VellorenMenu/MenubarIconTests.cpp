#include "Platform/Desktop/Appearance.h"
#include "Tests/Support/AgentTest.h"
#include "VellorenMenu/MenubarIcon.h"

namespace velloren {

namespace {

using State = MenubarIcon::State;

class MenubarIconTest : public AgentTest {
  protected:
    MenubarIconTest() {
        icon->setParent(&button);
        redrawUnder(Appearance::vibrantLight);
    }

    ~MenubarIconTest() override { Appearance::setCurrentName(std::nullopt); }

    /// The bar's host asks for the picture.
    void redrawUnder(const std::string& appearance) {
        Appearance::setCurrentName(appearance);
        (void)button.picture(22);
    }

    void apply(State state) {
        icon->setState(state);
        icon->applyState();
    }

    [[nodiscard]] QString shown() const { return icon->shownImage()->name(); }

    [[nodiscard]] QString shownAfter(double seconds) {
        loop.advance(RunLoop::Seconds(seconds));
        return shown();
    }

    StatusBarButton button{{28, 22}};
    MenubarIcon* icon = new MenubarIcon({0, 0, 28, 22});
};

} // namespace

TEST_F(MenubarIconTest, FollowsTheBarsAppearanceOnEveryDraw) {
    EXPECT_EQ(shown(), "menuIconBlackDefault");
    redrawUnder(Appearance::vibrantDark);
    EXPECT_EQ(shown(), "menuIconWhiteDefault");
    redrawUnder("NSAppearanceNameVibrantDarker");
    EXPECT_EQ(shown(), "menuIconBlackDefault");
}

TEST_F(MenubarIconTest, IsWhiteOnBlueWhileHighlighted) {
    icon->setHighlighted(true);
    EXPECT_EQ(shown(), "menuIconWhiteDefault");
    EXPECT_EQ(button.picture(22).pixelColor(0, 0), QColor(0, 80, 255)) << "the blue fills the square";
    icon->setHighlighted(false);
    EXPECT_EQ(shown(), "menuIconBlackDefault");
    EXPECT_EQ(button.picture(22).pixelColor(0, 0).alpha(), 0);
}

TEST_F(MenubarIconTest, BlinksEveryTwoSecondsWhileSyncing) {
    icon->setState(State::syncing);
    EXPECT_EQ(shownAfter(10), "menuIconBlackDefault") << "not before the state is applied";
    icon->applyState();
    EXPECT_EQ(shownAfter(1.9), "menuIconBlackInSync");
    EXPECT_EQ(shownAfter(0.1), "menuIconBlackDefault");
    icon->setHighlighted(true);
    EXPECT_EQ(shown(), "menuIconWhiteDefault");
    EXPECT_EQ(shownAfter(2), "menuIconWhiteInSync");
    apply(State::notSyncing);
    EXPECT_EQ(shown(), "menuIconWhiteDefault") << "at once when syncing ends";
    EXPECT_EQ(loop.pendingTimers(), 0u);
}

TEST_F(MenubarIconTest, LeavesTheEarlierTimerRunningWhenSyncingIsAppliedTwice) {
    apply(State::syncing);
    loop.advance(RunLoop::Seconds(1));
    apply(State::syncing);
    EXPECT_EQ(shownAfter(1), "menuIconBlackDefault");
    EXPECT_EQ(shownAfter(1), "menuIconBlackInSync") << "two flips within one period";
    apply(State::notSyncing);
    EXPECT_EQ(loop.pendingTimers(), 1u) << "only the latest timer ends";
}

TEST_F(MenubarIconTest, CentresItsImageOnWholePointsHalvesAwayFromZero) {
    icon->resize(23, 22);
    icon->applyState();
    ASSERT_EQ(icon->layer()->sublayers().size(), 1u) << "each rebuilding replaces the layer";
    EXPECT_EQ(icon->layer()->sublayers().front()->position(), QPointF(12, 11));
}

TEST_F(MenubarIconTest, TellsTheBarOnlyOfWhatChangedItsPicture) {
    int displays = 0;
    button.setDisplayHandler([&] { ++displays; });
    icon->setHighlighted(true);
    icon->setHighlighted(false);
    EXPECT_EQ(displays, 0) << "not before the present event is over";
    runPendingEvents();
    EXPECT_EQ(displays, 1);
    redrawUnder(Appearance::vibrantLight);
    runPendingEvents();
    EXPECT_EQ(displays, 1) << "drawing asks for no drawing";
}

} // namespace velloren
