#include "Platform/Desktop/Appearance.h"
#include "Tests/Support/AgentTest.h"
#include "VellorenMenu/MenubarIcon.h"

#include <gmock/gmock.h>

#include <set>

namespace velloren {

namespace {

using ::testing::SizeIs;

using State = MenubarIcon::State;

class MenubarIconTest : public AgentTest {
  protected:
    MenubarIconTest() {
        icon->setParent(&button);
        redrawUnder(Appearance::vibrantLight);
    }

    ~MenubarIconTest() override {
        for (const auto source : {AppearanceSource::BarSetting, AppearanceSource::Pixels})
            Appearance::setName(source, std::nullopt);
    }

    /// The bar's host asks for the picture.
    void redrawUnder(const std::string& appearance) {
        Appearance::setName(AppearanceSource::BarSetting, appearance);
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

TEST_F(MenubarIconTest, FollowsTheBarsAppearanceAndIsWhiteOnBlueWhileHighlighted) {
    redrawUnder(Appearance::vibrantDark);
    EXPECT_EQ(shown(), "menuIconWhiteDefault");
    redrawUnder("NSAppearanceNameVibrantDarker");
    EXPECT_EQ(shown(), "menuIconBlackDefault");
    icon->setHighlighted(true);
    EXPECT_EQ(shown(), "menuIconWhiteDefault");
    EXPECT_EQ(button.picture(22).pixelColor(0, 0), QColor(0, 80, 255)) << "the blue fills the square";
    icon->setHighlighted(false);
    EXPECT_EQ(shown(), "menuIconBlackDefault");
    EXPECT_EQ(button.picture(22).pixelColor(0, 0).alpha(), 0);
}

TEST_F(MenubarIconTest, IsDrawnForThePixelsThatBarsShow) {
    Appearance::setName(AppearanceSource::Pixels, Appearance::vibrantDark);
    for (const int side : {16, 24, 32, 33, 48, 64}) {
        const QImage drawn(QStringLiteral(":/images/menuIconWhiteDefault@%1px.png").arg(side));
        EXPECT_EQ(button.picture(side), drawn.convertToFormat(QImage::Format_ARGB32)) << side;
    }
}

TEST_F(MenubarIconTest, ReadsOnBarsOfBothKindsAsLongAsNobodySawTheBar) {
    const auto tonesOf = [this](int side) {
        std::set<int> tones;
        const QImage picture = button.picture(side);
        for (int index = 0; index < side * side; ++index) {
            const QColor pixel = picture.pixelColor(index % side, index / side);
            if (pixel.alpha() == 255)
                tones.insert(pixel.lightness() / 128);
        }
        return tones;
    };
    const auto hidesBarBetweenItsLines = [this](int side) {
        const QImage middle = button.picture(side).copy(side / 4, side / 2, side / 2, 1);
        return middle.convertToFormat(QImage::Format_RGB32).convertToFormat(middle.format()) == middle;
    };
    for (const auto& name : {Appearance::vibrantLight, Appearance::vibrantDark}) {
        Appearance::setName(AppearanceSource::BarSetting, name);
        for (const int side : {16, 22, 24, 32, 48}) {
            EXPECT_THAT(tonesOf(side), SizeIs(2)) << side;
            EXPECT_TRUE(hidesBarBetweenItsLines(side)) << side;
            button.setSeenAppearance(name);
            EXPECT_THAT(tonesOf(side), SizeIs(1)) << side;
            EXPECT_FALSE(hidesBarBetweenItsLines(side)) << side;
            button.setSeenAppearance(std::nullopt);
        }
    }
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
