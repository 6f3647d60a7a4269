#pragma once

#include "Tests/Support/Pictures.h"
#include "Tests/Support/VirtualDesktop.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velloren {

/// The agent as a process on a desktop of its own, with the registry started by the bus, a store with
/// meetings and a user who is logged in.
class MenuAgentTest : public ::testing::Test {
  protected:
    inline static const std::string mainAppName = "com.velloren.velloren-mac";
    inline static const std::string binaries = VELLOREN_BINARIES;

    MenuAgentTest() {
        desktop.bus().addService(mainAppName + ".agent", binaries + "/velloren-agent");
        EXPECT_EQ(desktop.start(binaries + "/velloren-main", {"--make-demonstration-store"})->wait(), 0);
    }

    ~MenuAgentTest() override {
        if (HasFailure() && agent) {
            const auto picture =
                std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()) + ".png";
            desktop.screen().save(QString::fromStdString(picture));
            std::fprintf(stderr, "--- the screen is in %s; the agent's log\n%s",
                         std::filesystem::absolute(picture).c_str(), agent->output().c_str());
        }
        for (const pid_t process : mainAppProcesses())
            kill(process, SIGKILL);
    }

    void startAgent() {
        agent = desktop.start(binaries + "/velloren-menu");
        ASSERT_TRUE(waitForLog("Registering menuAppListener endpoint SUCCESSFUL"));
        if (desktop.hasTray()) {
            ASSERT_TRUE(desktop.waitUntil([this] { return desktop.itemCount() == 1; }));
        }
    }

    /// The agent ends by itself, as it should.
    void expectOrderlyEnd() {
        EXPECT_EQ(agent->wait(), 0);
        EXPECT_EQ(countInLog("applicationWillTerminate applicationWillTerminate"), 1);
    }

    /// Has the bus start the main app when it is asked to.
    void installMainApp() {
        const auto script = desktop.folder() / "main-app.sh";
        std::ofstream(script) << "cd " << desktop.folder().string() << "\necho $$ >> main-app.pids\nexec "
                              << binaries
                              << "/velloren-main --no-window --log-requests requests >> main-app.log 2>&1\n";
        desktop.bus().addService(mainAppName, "/bin/sh " + script.string());
    }

    /// How often the popover was shown.
    [[nodiscard]] int showings() const { return countInLog("MainViewController viewWillAppear()"); }

    /// Clicks the icon once that shows.
    void openPopover(QPoint place = VirtualDesktop::icon) {
        ASSERT_FALSE(desktop.popover());
        const QRect around(VirtualDesktop::icon - QPoint(9, 9), VirtualDesktop::icon + QPoint(9, 9));
        ASSERT_TRUE(desktop.waitUntil([&] { return greatestContrast(desktop.screen().copy(around)) >= 3; }));
        desktop.click(place);
        ASSERT_TRUE(desktop.waitUntil([this] { return desktop.popover().has_value(); })) << "a lost click";
    }

    /// Whether what is typed comes to go to the popover.
    bool popoverGetsKeys() {
        return desktop.waitUntil([this] {
            std::string title;
            return desktop.run({"xdotool", "getwindowfocus", "getwindowname"}, &title) == 0 &&
                   title == "Velloren\n";
        });
    }

    bool closesWithin(const std::function<void()>& action) {
        action();
        return desktop.waitUntil([this] { return !desktop.popover(); });
    }

    bool closesOnClick(QPoint place = VirtualDesktop::elsewhere) {
        return closesWithin([&] { desktop.click(place); });
    }

    void clickOpenButton(int row) {
        // A running main app's meetings show a moment after the popover, which then grows.
        std::optional<QRect> window;
        ASSERT_TRUE(desktop.waitUntil([&] {
            window = desktop.popover();
            return window && window->height() > 60 * row + 140;
        }));
        desktop.click({window->right() - screenGap - 43, window->top() + 46 + 60 * row});
    }

    /// These open the popover, choose in it and wait until it has closed.
    void openMeeting(int row) {
        openPopover();
        EXPECT_TRUE(closesWithin([&] { clickOpenButton(row); }));
    }

    void createMeeting() {
        openPopover();
        const auto window = desktop.popover();
        ASSERT_TRUE(window);
        EXPECT_TRUE(closesOnClick({window->center().x(), window->top() + 16 + 180 + 20}));
    }

    /// Clicks the button of the action menu, and what `item` rows below it is: 0 is the first that shows.
    void openActionMenu() {
        const auto window = desktop.popover();
        ASSERT_TRUE(window);
        desktop.click({window->right() - screenGap - 24, window->bottom() - shadow - 8 - 15});
        ASSERT_TRUE(desktop.waitUntil([this] { return desktop.menu().has_value(); }));
    }

    void clickActionMenu(int item) {
        openActionMenu();
        const auto menu = desktop.menu();
        ASSERT_TRUE(menu);
        constexpr std::array places{18, 43, 78};
        desktop.click({menu->center().x(), menu->top() + places.at(std::size_t(item))});
    }

    [[nodiscard]] int countInLog(const std::string& text) const {
        return int(QString::fromStdString(agent->output()).count(QString::fromStdString(text)));
    }

    bool waitForLog(const std::string& text, int times = 1) {
        return desktop.waitUntil([&] { return countInLog(text) >= times; });
    }

    /// What the main app was asked, "fetch" left out.
    [[nodiscard]] std::vector<std::string> requests() const {
        auto lines = linesOf("requests");
        std::erase(lines, "fetch");
        return lines;
    }

    void expectRequests(const std::vector<std::string>& expected) {
        desktop.waitUntil([&] { return requests().size() >= expected.size(); });
        EXPECT_EQ(requests(), expected);
    }

    [[nodiscard]] std::vector<pid_t> mainAppProcesses() const {
        std::vector<pid_t> processes;
        for (const std::string& line : linesOf("main-app.pids"))
            processes.push_back(std::stoi(line));
        return processes;
    }

    VirtualDesktop desktop;
    std::unique_ptr<Process> agent;

  private:
    static constexpr int shadow = 12;
    static constexpr int screenGap =
        4; // between the popover and the edge of the screen, where its window ends

    [[nodiscard]] std::vector<std::string> linesOf(const char* file) const {
        std::vector<std::string> lines;
        std::ifstream stream(desktop.folder() / file);
        for (std::string line; std::getline(stream, line);)
            lines.push_back(line);
        return lines;
    }
};

} // namespace velloren
