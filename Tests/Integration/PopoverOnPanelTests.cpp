#include "Tests/Integration/MenuAgentTest.h"
#include "Tests/Support/Pictures.h"

namespace velloren {

namespace {

using PopoverOnPanel = MenuAgentTest;
using IconInPanel = MenuAgentTest;

/// The middle of the pixels that are `wanted` in a row of the screen.
double middleOf(const QImage& screen, int row, const std::function<bool(QColor)>& wanted) {
    const auto bounds =
        boundsWithin({0, row, screen.width(), 1}, [&](QPoint at) { return wanted(screen.pixelColor(at)); });
    return bounds ? (bounds->left() + bounds->right()) / 2.0 : -1;
}

} // namespace

TEST_F(IconInPanel, StartsWithoutARuntimeDirectory) {
    agent =
        std::make_unique<Process>(std::vector<std::string>{binaries + "/velloren-menu"},
                                  Process::Environment{{"XDG_RUNTIME_DIR", ""}}, desktop.folder() / "menu");
    ASSERT_TRUE(desktop.waitUntil([this] { return desktop.itemCount() == 1; }));
    openPopover();
    EXPECT_EQ(countInLog("Registering menuAppListener"), 0);
}

TEST_F(IconInPanel, OpensThePopoverThoughItHasNoStandardStreams) {
    agent = desktop.start("sh", {"-c", "exec " + binaries + "/velloren-menu <&- >&- 2>&-"});
    ASSERT_TRUE(desktop.waitUntil([this] { return desktop.itemCount() == 1; }));
    openPopover();
}

TEST_F(IconInPanel, EndsWithAMessageWithoutASessionBusAndWhenThatOrTheDisplayGoes) {
    const auto lost = desktop.start(binaries + "/velloren-menu", {},
                                    {{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"}});
    EXPECT_EQ(lost->wait(), 1);
    EXPECT_NE(lost->output().find("velloren-menu: there is no session bus"), std::string::npos);

    startAgent();
    openPopover();
    desktop.run({"sh", "-c", "xdotool windowkill $(xdotool search --onlyvisible --class velloren-menu)"});
    EXPECT_EQ(agent->wait(), 1);
    EXPECT_EQ(countInLog("The display went away"), 1);

    startAgent();
    ASSERT_TRUE(waitForLog("Registering menuAppListener endpoint SUCCESSFUL", 2)); // not the former one's
    const auto mainApp = desktop.start(binaries + "/velloren-main", {"--no-window"});
    ASSERT_TRUE(desktop.waitUntil([this] { return desktop.bus().hasOwner(mainAppName); }));
    desktop.bus().stop();
    EXPECT_EQ(mainApp->wait(), 1);
    EXPECT_EQ(agent->wait(), 1);
    EXPECT_EQ(countInLog("velloren-menu: the session bus went away"), 1);
}

TEST_F(IconInPanel, EndsInOrderOnASignalThatComesWithTheEndOfTheBus) {
    startAgent();
    agent->signal(SIGSTOP);
    desktop.bus().stop();
    ::tgkill(agent->pid(), agent->pid(), SIGTERM); // its main thread, as while it is not stopped
    agent->signal(SIGCONT);
    expectOrderlyEnd();
}

TEST_F(IconInPanel, EndsOnASignalByForceWhereTheDisplayHangs) {
    startAgent();
    desktop.signalDisplay(SIGSTOP);
    agent->signal(SIGTERM);
    EXPECT_EQ(agent->wait(), 0);
    desktop.signalDisplay(SIGCONT);
}

TEST_F(IconInPanel, EndsOnASignalThoughTheBusHangs) {
    startAgent();
    desktop.bus().hang();
    agent->signal(SIGTERM);
    expectOrderlyEnd();
}

TEST_F(PopoverOnPanel, GoesAlongToAnotherWorkspace) {
    desktop.run({"xdotool", "set_num_desktops", "2"});
    startAgent();
    openPopover();
    desktop.click(VirtualDesktop::elsewhere, 2); // such a press is for others
    desktop.run({"xdotool", "set_desktop", "1"});
    std::string current;
    ASSERT_TRUE(desktop.waitUntil([&] {
        desktop.run({"xdotool", "get_desktop"}, &current);
        return current == "1\n";
    }));
    EXPECT_TRUE(desktop.waitUntil([this] { return desktop.popover().has_value(); }));
    EXPECT_TRUE(closesOnClick(VirtualDesktop::icon));
    EXPECT_EQ(showings(), 1) << "it was open all the time";
}

TEST_F(PopoverOnPanel, HangsBelowThePanelWithItsArrowAtTheIconWhereverInItTheClickWas) {
    startAgent();
    const int icon = VirtualDesktop::icon.y() - VirtualDesktop::aboveGlyph.y();
    const auto isGrey = [](QColor color) { return color == QColor(236, 236, 236); };
    for (const QPoint place : {QPoint(-9, -13), QPoint(0, 0), QPoint(9, 13)}) {
        openPopover(VirtualDesktop::icon + place);
        const int top = desktop.popover()->top();
        EXPECT_NEAR(top, 33, 1);
        EXPECT_TRUE(desktop.waitUntil([&] {
            const QImage screen = desktop.screen();
            const double highlight = middleOf(screen, icon, isHighlight);
            return highlight > 0 && std::abs(middleOf(screen, top + 3, isGrey) - highlight) <= 1;
        }));
        EXPECT_TRUE(closesOnClick());
    }
}

TEST_F(PopoverOnPanel, FollowsTheScaleOfTextsWithItsMenu) {
    const auto settings = desktop.folder() / "xsettings";
    const auto setScale = [&](int scale) {
        std::ofstream(settings) << "Xft/DPI " << scale * 96 * 1024 << '\n';
    };
    setScale(1);
    const auto manager = desktop.start("xsettingsd", {"-c", settings.string()});
    ASSERT_TRUE(desktop.waitUntil([this] { return desktop.run({"dump_xsettings"}) == 0; }));
    startAgent();
    openPopover();
    openActionMenu();
    desktop.type("Escape");
    const int width = desktop.popover()->width();
    EXPECT_TRUE(closesOnClick());
    setScale(2);
    manager->signal(SIGHUP);
    std::optional<QRect> popover;
    ASSERT_TRUE(desktop.waitUntil([&] {
        openPopover();
        popover = desktop.popover();
        return (popover && popover->width() > width * 3 / 2) || !closesOnClick();
    }));
    const auto comesToShow = [&](QPoint place, QColor color) {
        return desktop.waitUntil([&] { return desktop.screen().pixelColor(place) == color; });
    };
    EXPECT_TRUE(comesToShow(popover->bottomRight() - QPoint(32, 32), {236, 236, 236}));
    desktop.click(popover->bottomRight() - QPoint(56, 70));
    ASSERT_TRUE(desktop.waitUntil([this] { return desktop.menu().has_value(); }));
    EXPECT_TRUE(comesToShow(desktop.menu()->bottomRight() - QPoint(32, 32), Qt::white));
}

TEST_F(PopoverOnPanel, OutlivesTheClickThatOpensItThoughItHearsOfItsPressLater) {
    startAgent();
    openPopover();
    for (int round = 0; round < 8; ++round) {
        EXPECT_TRUE(closesOnClick()); // for a while, the rest of that click is awaited
        agent->signal(SIGSTOP);
        desktop.click(VirtualDesktop::icon);
        agent->signal(SIGCONT);
        ASSERT_TRUE(waitForLog("viewWillAppear(), ", round + 2));
        EXPECT_TRUE(popoverGetsKeys()) << round;
    }
}

TEST_F(PopoverOnPanel, IsNoTaskHasNoSecondShadowAndTurnsNowhereBlackWhenTheCompositorEnds) {
    startAgent();
    openPopover();
    std::string windows;
    desktop.run({"xprop", "-root", "_NET_CLIENT_LIST"}, &windows);
    EXPECT_EQ(std::ranges::count(windows, 'x'), 1) << "the panel is the only one: " << windows;
    openActionMenu();
    std::string shadows;
    desktop.run({"sh", "-c",
                 "for each in $(xdotool search --onlyvisible --class velloren-menu); "
                 "do xprop -id $each _GTK_FRAME_EXTENTS _KDE_NET_WM_SKIP_CLOSE_ANIMATION; done"},
                &shadows);
    EXPECT_EQ(std::ranges::count(shadows, '='), 3)
        << "the popover's and the menu's are their own, and the popover goes at once: " << shadows;
    EXPECT_NE(shadows.find("ANIMATION(CARDINAL) = 1"), std::string::npos) << shadows;
    desktop.type("Escape");
    const QPoint margin = desktop.popover()->bottomLeft() + QPoint(4, -4);
    desktop.run(
        {"xfconf-query", "-c", "xfwm4", "-p", "/general/use_compositing", "-n", "-t", "bool", "-s", "false"});
    EXPECT_TRUE(desktop.waitUntil([&] {
        const QImage screen = desktop.screen();
        return screen.pixelColor(margin) == screen.pixelColor(VirtualDesktop::elsewhere);
    }));
    const auto popover = desktop.popover();
    ASSERT_TRUE(popover);
    EXPECT_TRUE(desktop.waitUntil([&] {
        return desktop.screen().pixelColor(popover->left(), popover->center().y()).lightness() > 100;
    })) << "its rim";
}

} // namespace velloren
