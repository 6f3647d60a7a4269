#include "Tests/Integration/MenuAgentTest.h"

namespace velloren {

namespace {

/// With a program of the test's own as the user's default for mail.
class ActionMenuOnPanel : public MenuAgentTest {
  protected:
    ActionMenuOnPanel() {
        const auto applications = std::filesystem::path(std::getenv("XDG_DATA_HOME")) / "applications";
        std::filesystem::create_directories(applications);
        std::ofstream(desktop.folder() / "open-link.sh")
            << "echo \"$1\" >> " << openedFile().string() << "\n";
        std::ofstream(applications / "stub.desktop")
            << "[Desktop Entry]\nType=Application\nName=Stub\nExec=sh " << desktop.folder().string()
            << "/open-link.sh %u\nMimeType=x-scheme-handler/mailto;\n";
        std::ofstream(std::filesystem::path(std::getenv("XDG_CONFIG_HOME")) / "mimeapps.list")
            << "[Default Applications]\nx-scheme-handler/mailto=stub.desktop\n";
        startAgent();
        openPopover();
    }

    [[nodiscard]] std::filesystem::path openedFile() const { return desktop.folder() / "opened"; }
};

} // namespace

TEST_F(ActionMenuOnPanel, OpensAMailWithTheUsersDefaultProgramAndQuits) {
    std::string opened;
    const auto waitForAddress = [&] { return bool(std::getline(std::ifstream(openedFile()), opened)); };
    clickActionMenu(0);
    EXPECT_TRUE(desktop.waitUntil(waitForAddress));
    EXPECT_EQ(opened, "mailto:support@velloren.example?subject=Velloren%20" VELLOREN_VERSION
                      "%20(" VELLOREN_BUILD ")%20Support%20subject%20line");
    openPopover();
    clickActionMenu(2);
    expectOrderlyEnd();
    EXPECT_EQ(countInLog("applicationShouldTerminate: <Application: velloren-menu>"), 1);
}

TEST_F(ActionMenuOnPanel, LeavesThePopoverOpenWhenAClickDismissesIt) {
    for (const QPoint place : {VirtualDesktop::elsewhere, VirtualDesktop::icon}) {
        openActionMenu();
        desktop.click(place);
        EXPECT_TRUE(desktop.waitUntil([this] { return !desktop.menu(); }));
        EXPECT_TRUE(desktop.popover());
    }
    EXPECT_TRUE(closesOnClick());
    EXPECT_FALSE(std::filesystem::exists(openedFile()));
}

} // namespace velloren
