#include "Tests/Integration/MenuAgentTest.h"
#include "Tests/Support/Pictures.h"

#include <utility>

namespace velloren {

namespace {

class Keyboard : public MenuAgentTest {
  protected:
    void openPopoverAndPress(const char* key, int times) {
        openPopover();
        ASSERT_TRUE(popoverGetsKeys());
        for (int press = 0; press < times; ++press)
            desktop.type(key);
    }
};

using SecondStart = MenuAgentTest;

class ScreenReader : public MenuAgentTest {
  protected:
    ScreenReader() {
        // Qt looks for the bus of the assistive programs once, and a desktop starts that before it.
        desktop.bus().call("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus.GetAddress");
    }

    std::string accessibles(const std::string& nameToPress = {}) {
        std::string printed;
        desktop.run({"/usr/bin/python3", LIST_ACCESSIBLES, "velloren-menu", nameToPress}, &printed);
        return printed;
    }

    EnvironmentVariable bridge{"QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1"};
};

} // namespace

TEST_F(Keyboard, GoesThroughThePopoverFromTopToBottom) {
    installMainApp();
    startAgent();

    std::vector<std::string> expected;
    for (const auto& [step, times, key, request] :
         {std::tuple("Tab", 1, "Return", "open demo-1"), std::tuple("Down", 3, "space", "open demo-3"),
          std::tuple("Up", 2, "Return", "create")}) {
        openPopoverAndPress(step, times);
        EXPECT_TRUE(closesWithin([this, key = key] { desktop.type(key); }));
        expected.emplace_back(request);
        expectRequests(expected);
    }
}

TEST_F(Keyboard, ClosesThePopoverWithEscapeAndOpensItsMenuWithSpace) {
    startAgent();
    openPopoverAndPress("Tab", 5);
    desktop.type("space");
    EXPECT_TRUE(desktop.waitUntil([this] { return desktop.menu().has_value(); }));
    desktop.type("Escape");
    EXPECT_TRUE(desktop.waitUntil([this] { return !desktop.menu(); }));
    EXPECT_TRUE(desktop.popover());
    desktop.run({"sh", "-c", "xdotool windowfocus $(xwininfo -root -int | awk '/Window id/ {print $4}')"});
    EXPECT_TRUE(popoverGetsKeys()) << "again, from where nobody types";
    EXPECT_TRUE(closesWithin([this] { desktop.type("Escape"); }));
}

TEST_F(Keyboard, ShowsWhereItIsAlsoInAPopoverThatIsOpenedAgainAtOnce) {
    startAgent();
    openPopover();
    ASSERT_TRUE(popoverGetsKeys());
    // Not in one go: Qt hands on a key later than the press that came with it.
    ASSERT_TRUE(closesWithin([this] { desktop.type("Escape"); }));
    desktop.run({"xdotool", "click", "1"});
    ASSERT_TRUE(waitForLog("viewWillAppear(), ", 2));
    ASSERT_TRUE(popoverGetsKeys());
    desktop.type("Tab");
    const QRect firstRow(desktop.popover()->topLeft() + QPoint(0, 10), QSize(320, 60));
    EXPECT_TRUE(desktop.waitUntil([&] {
        const QImage screen = desktop.screen();
        return boundsWithin(firstRow, [&](QPoint at) { return isHighlight(screen.pixelColor(at)); })
            .has_value();
    }));
}

TEST_F(SecondStart, ShowsThePopoverOfTheFirstAtThePointer) {
    const auto startAgain = [this] { return desktop.run({binaries + "/velloren-menu"}); };
    startAgent();
    desktop.moveTo({300, 300});
    for (const auto& bySession :
         {std::vector<std::string>{"env", "VELLOREN_AUTOSTART=1", binaries + "/velloren-menu"},
          std::vector<std::string>{binaries + "/velloren-menu", "-session", "1011b_1795"}})
        EXPECT_EQ(desktop.run(bySession), 0);
    openPopover();
    ASSERT_TRUE(closesOnClick());
    desktop.moveTo({640, 300});
    EXPECT_EQ(startAgain(), 0);
    ASSERT_TRUE(desktop.waitUntil([this] { return desktop.popover().has_value(); }));
    EXPECT_NEAR(desktop.popover()->center().x(), 640, 4);
    EXPECT_EQ(desktop.itemCount(), 1);

    EXPECT_EQ(startAgain(), 0) << "it stays open";
    EXPECT_TRUE(desktop.popover());
    EXPECT_EQ(showings(), 2);
    EXPECT_TRUE(popoverGetsKeys());
    EXPECT_TRUE(closesWithin([this] { desktop.type("Return"); }));
    EXPECT_EQ(countInLog("openMeeting"), 1) << "no hand is at the pointer";
}

TEST_F(SecondStart, TakesThePlaceOfAFirstThatIsAboutToEnd) {
    startAgent();
    const auto first = std::exchange(agent, nullptr);
    first->signal(SIGSTOP);
    ::tgkill(first->pid(), first->pid(), SIGTERM); // its main thread, as while it is not stopped
    agent = desktop.start(binaries + "/velloren-menu");
    ASSERT_TRUE(desktop.waitUntil([this] {
        const auto queue =
            desktop.bus().callDaemon("ListQueuedOwners", {"string:com.velloren.velloren-mac.menu"});
        return std::ranges::count(queue.value_or(""), '"') == 4;
    })) << "two are in line";
    first->signal(SIGCONT);
    EXPECT_EQ(first->wait(), 0);
    EXPECT_TRUE(waitForLog("Registering menuAppListener endpoint SUCCESSFUL", 2));
    EXPECT_TRUE(agent->isRunning());
}

TEST_F(ScreenReader, IsToldTheNamesAndRolesOfAllControlsAndPressesThem) {
    installMainApp();
    startAgent();
    openPopover();
    std::string shown;
    EXPECT_TRUE(desktop.waitUntil([&] {
        shown = accessibles();
        return shown.find("More actions") != std::string::npos;
    })) << shown;
    for (const char* line : {"dialog | Velloren | ", "button | Open | Design review", "label | Today at ",
                             ", Today at ", "button | Create a new meeting | ", "button | More actions | "})
        EXPECT_NE(shown.find(line), std::string::npos) << line << "\n" << shown;
    EXPECT_EQ(shown.find("No upcoming meetings"), std::string::npos) << "its row is not shown";

    accessibles("More actions");
    EXPECT_TRUE(desktop.waitUntil([this] { return desktop.menu().has_value(); }));
    desktop.type("Escape");
    EXPECT_TRUE(closesWithin([this] { accessibles("Create a new meeting"); }));
    expectRequests({"create"});
}

} // namespace velloren
