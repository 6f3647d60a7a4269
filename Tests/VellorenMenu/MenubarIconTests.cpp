#include "Platform/Desktop/Appearance.h"
#include "Platform/Desktop/StatusBar.h"
#include "Tests/Support/ManualRunLoop.h"
#include "Tests/Support/QtTest.h"
#include "VellorenMenu/MenubarIcon.h"

#include <optional>

namespace velloren {

namespace {

constexpr QColor highlightBlue(0, 80, 255);

class MenubarIconTest : public QtTest {
  protected:
    MenubarIconTest() {
        SharedInstance<RunLoop>::provide([] { return std::make_unique<ManualRunLoop>(); });
        Appearance::setCurrentName(Appearance::vibrantLight);
        icon = new MenubarIcon({0, 0, 28, 22});
        icon->setParent(&button);
        redraw();
    }

    ~MenubarIconTest() override {
        Appearance::setCurrentName(std::nullopt);
        SharedInstance<RunLoop>::reset();
    }

    static ManualRunLoop& loop() { return ManualRunLoop::shared(); }

    /// The bar's host asks for the picture.
    void redraw() { (void)button.picture(22); }

    void setState(MenubarIcon::State state) {
        icon->setState(state);
        icon->applyState();
    }

    [[nodiscard]] QString shown() const {
        return icon->shownImage() ? icon->shownImage()->name() : QString();
    }

    StatusBarButton button{{28, 22}};
    MenubarIcon* icon = nullptr;
};

using State = MenubarIcon::State;

} // namespace

TEST_F(MenubarIconTest, FollowsTheBarsAppearanceOnEveryDraw) {
    EXPECT_EQ(shown(), "menuIconBlackDefault");
    Appearance::setCurrentName(Appearance::vibrantDark);
    redraw();
    EXPECT_EQ(shown(), "menuIconWhiteDefault");
    Appearance::setCurrentName("NSAppearanceNameVibrantDarker");
    redraw();
    EXPECT_EQ(shown(), "menuIconBlackDefault");
}

TEST_F(MenubarIconTest, IsWhiteOnBlueWhileHighlighted) {
    icon->setHighlighted(true);
    EXPECT_EQ(shown(), "menuIconWhiteDefault");
    EXPECT_EQ(button.picture(22).pixelColor(0, 0), highlightBlue) << "the blue fills the square";
    icon->setHighlighted(false);
    EXPECT_EQ(shown(), "menuIconBlackDefault");
    EXPECT_EQ(button.picture(22).pixelColor(0, 0).alpha(), 0);
}

TEST_F(MenubarIconTest, BlinksEveryTwoSecondsWhileSyncing) {
    setState(State::syncing);
    EXPECT_EQ(shown(), "menuIconBlackInSync");
    loop().advance(RunLoop::Seconds(1.9));
    EXPECT_EQ(shown(), "menuIconBlackInSync");
    loop().advance(RunLoop::Seconds(0.1));
    EXPECT_EQ(shown(), "menuIconBlackDefault");
    icon->setHighlighted(true);
    EXPECT_EQ(shown(), "menuIconWhiteDefault");
    loop().advance(RunLoop::Seconds(2));
    EXPECT_EQ(shown(), "menuIconWhiteInSync");
}

TEST_F(MenubarIconTest, ShowsTheDefaultAtOnceWhenSyncingEnds) {
    setState(State::syncing);
    setState(State::notSyncing);
    EXPECT_EQ(shown(), "menuIconBlackDefault");
    loop().advance(RunLoop::Seconds(10));
    EXPECT_EQ(shown(), "menuIconBlackDefault");
    EXPECT_EQ(loop().pendingTimers(), 0u);
}

TEST_F(MenubarIconTest, LeavesTheEarlierTimerRunningWhenSyncingIsAppliedTwice) {
    setState(State::syncing);
    loop().advance(RunLoop::Seconds(1));
    setState(State::syncing);
    EXPECT_EQ(loop().pendingTimers(), 2u);
    loop().advance(RunLoop::Seconds(1));
    EXPECT_EQ(shown(), "menuIconBlackDefault");
    loop().advance(RunLoop::Seconds(1));
    EXPECT_EQ(shown(), "menuIconBlackInSync") << "two flips within one period";

    setState(State::notSyncing);
    EXPECT_EQ(loop().pendingTimers(), 1u) << "only the latest timer ends";
}

TEST_F(MenubarIconTest, ChangesNothingUntilItsStateIsApplied) {
    icon->setState(State::syncing);
    EXPECT_EQ(shown(), "menuIconBlackDefault");
    EXPECT_EQ(loop().pendingTimers(), 0u);
}

TEST_F(MenubarIconTest, CentresItsImageOnWholePointsHalvesAwayFromZero) {
    const auto placed = [](int width) {
        MenubarIcon other({0, 0, width, 22});
        other.applyState();
        return other.layer()->sublayers().front()->position();
    };
    EXPECT_EQ(placed(22), QPointF(11, 11));
    EXPECT_EQ(placed(23), QPointF(12, 11));
    EXPECT_EQ(icon->layer()->sublayers().size(), 1u) << "each rebuilding replaces the layer";
}

TEST_F(MenubarIconTest, TellsTheBarOnlyOfWhatChangedItsPicture) {
    int displays = 0;
    button.setDisplayHandler([&] { ++displays; });
    icon->setHighlighted(true);
    icon->setHighlighted(false);
    EXPECT_EQ(displays, 0) << "not before the present event is over";
    runPendingEvents();
    EXPECT_EQ(displays, 1);
    redraw();
    runPendingEvents();
    EXPECT_EQ(displays, 1) << "drawing asks for no drawing";
}

TEST_F(MenubarIconTest, LetsAPressPassWithoutADelegate) {
    icon->setDelegate(nullptr);
    button.press({5, 5});
}

} // namespace velloren
