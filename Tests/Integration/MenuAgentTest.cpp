#include "Tests/Integration/MenuAgentTest.h"

#include <array>
#include <fstream>

namespace velloren {

namespace {

constexpr int shadow = 12;
constexpr int screenGap = 4; // between the popover and the edge of the screen, where its window ends

std::vector<std::string> linesOf(const std::filesystem::path& file) {
    std::vector<std::string> lines;
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

} // namespace

const std::string MenuAgentTest::listAccessibles = LIST_ACCESSIBLES;

MenuAgentTest::MenuAgentTest() {
    installRegistry(binaries + "/velloren-agent");
    EXPECT_EQ(desktop.start(binaries + "/velloren-main", {"--make-demonstration-store"})->wait(), 0);
}

MenuAgentTest::~MenuAgentTest() {
    if (HasFailure() && agent) {
        const auto picture =
            std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()) + ".png";
        desktop.screen().save(QString::fromStdString(picture));
        std::fprintf(stderr, "--- the screen is in %s; the agent's log\n%s",
                     std::filesystem::absolute(picture).c_str(), log().c_str());
    }
    for (const pid_t process : mainAppProcesses())
        kill(process, SIGKILL);
}

void MenuAgentTest::startAgent() {
    agent = desktop.start(binaries + "/velloren-menu");
    ASSERT_TRUE(waitForLog("Registering menuAppListener endpoint SUCCESSFUL"));
    if (desktop.hasTray()) {
        ASSERT_TRUE(desktop.waitUntil([this] { return desktop.itemCount() == 1; }));
    }
}

void MenuAgentTest::installRegistry(const std::string& command) {
    desktop.bus().addService("com.velloren.velloren-mac.agent", command);
}

void MenuAgentTest::installMainApp(Make make) {
    const auto script = desktop.folder() / "main-app.sh";
    const std::string command = make == Make::StandIn ? binaries + "/velloren-main --no-window"
                                                      : "/usr/bin/python3 " FOREIGN_MAIN_APP;
    std::ofstream(script) << "cd " << desktop.folder().string() << "\necho $$ >> main-app.pids\nexec "
                          << command << " --log-requests requests >> main-app.log 2>&1\n";
    desktop.bus().addService(mainAppName, "/bin/sh " + script.string());
}

void MenuAgentTest::openPopover(QPoint place) {
    ASSERT_FALSE(desktop.popover());
    // A panel that just got the item may not show it yet.
    ASSERT_TRUE(desktop.waitUntil([this, place] {
        desktop.click(place);
        for (int look = 0; look < 20; ++look) {
            if (desktop.popover())
                return true;
        }
        return false;
    }));
}

bool MenuAgentTest::popoverGetsKeys() {
    return desktop.waitUntil([this] {
        std::string title;
        return desktop.run({"xdotool", "getwindowfocus", "getwindowname"}, &title) == 0 &&
               title == "Velloren\n";
    });
}

bool MenuAgentTest::closesWithin(const std::function<void()>& action) {
    action();
    return desktop.waitUntil([this] { return !desktop.popover(); });
}

bool MenuAgentTest::closesOnClick(QPoint place, int button) {
    return closesWithin([&] { desktop.click(place, button); });
}

void MenuAgentTest::clickOpenButton(int row) {
    const auto window = desktop.popover();
    ASSERT_TRUE(window);
    desktop.click({window->right() - screenGap - 43, window->top() + 46 + 60 * row});
}

void MenuAgentTest::openMeeting(int row) {
    openPopover();
    EXPECT_TRUE(closesWithin([&] { clickOpenButton(row); }));
}

void MenuAgentTest::createMeeting() {
    openPopover();
    const auto window = desktop.popover();
    ASSERT_TRUE(window);
    EXPECT_TRUE(closesOnClick({window->center().x(), window->top() + 16 + 180 + 20}));
}

void MenuAgentTest::openActionMenu() {
    const auto window = desktop.popover();
    ASSERT_TRUE(window);
    desktop.click({window->right() - screenGap - 24, window->bottom() - shadow - 8 - 15});
    ASSERT_TRUE(desktop.waitUntil([this] { return desktop.menu().has_value(); }));
}

void MenuAgentTest::clickActionMenu(int item) {
    openActionMenu();
    const auto menu = desktop.menu();
    ASSERT_TRUE(menu);
    constexpr std::array places{18, 43, 78};
    desktop.click({menu->center().x(), menu->top() + places.at(std::size_t(item))});
}

int MenuAgentTest::countInLog(const std::string& text) const {
    int count = 0;
    const std::string all = log();
    for (auto place = all.find(text); place != std::string::npos; place = all.find(text, place + 1))
        ++count;
    return count;
}

bool MenuAgentTest::waitForLog(const std::string& text, int times) {
    return desktop.waitUntil([&] { return countInLog(text) >= times; });
}

std::vector<std::string> MenuAgentTest::requests() const {
    auto lines = linesOf(desktop.folder() / "requests");
    std::erase(lines, "fetch");
    return lines;
}

void MenuAgentTest::expectRequests(const std::vector<std::string>& expected) {
    desktop.waitUntil([&] { return requests().size() >= expected.size(); });
    EXPECT_EQ(requests(), expected);
}

std::vector<pid_t> MenuAgentTest::mainAppProcesses() const {
    std::vector<pid_t> processes;
    for (const std::string& line : linesOf(desktop.folder() / "main-app.pids"))
        processes.push_back(std::stoi(line));
    return processes;
}

} // namespace velloren
