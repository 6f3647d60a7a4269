#pragma once

#include "Tests/Support/VirtualDesktop.h"

#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <string>
#include <vector>

namespace velloren {

/// The agent as a process on a desktop of its own, with the registry started by the bus, a store with
/// meetings and a user who is logged in.
class MenuAgentTest : public ::testing::Test {
  public:
    enum class Make { StandIn, Foreign };

  protected:
    inline static const std::string mainAppName = "com.velloren.velloren-mac";
    inline static const std::string binaries = VELLOREN_BINARIES;
    static const std::string listAccessibles; ///< a program; its argument is the name of an application

    MenuAgentTest();
    ~MenuAgentTest() override;

    void startAgent();
    /// From now on the bus starts this command when the registry is asked for.
    void installRegistry(const std::string& command);
    /// Has the bus start this main app when it is asked to.
    void installMainApp(Make make = Make::StandIn);

    /// Clicks the icon until the popover is open.
    void openPopover(QPoint place = VirtualDesktop::icon);
    /// Whether what is typed comes to go to the popover.
    bool popoverGetsKeys();
    bool closesWithin(const std::function<void()>& action);
    bool closesOnClick(QPoint place = VirtualDesktop::elsewhere, int button = 1);
    void clickOpenButton(int row);
    /// These open the popover, choose in it and wait until it has closed.
    void openMeeting(int row);
    void createMeeting();
    /// Clicks the button of the action menu, and what `item` rows below it is: 0 is the first that shows.
    void openActionMenu();
    void clickActionMenu(int item);

    [[nodiscard]] std::string log() const { return agent->output(); }

    [[nodiscard]] int countInLog(const std::string& text) const;
    bool waitForLog(const std::string& text, int times = 1);
    /// What the main app was asked, "fetch" left out.
    [[nodiscard]] std::vector<std::string> requests() const;
    void expectRequests(const std::vector<std::string>& expected);
    [[nodiscard]] std::vector<pid_t> mainAppProcesses() const;

    VirtualDesktop desktop;
    std::unique_ptr<Process> agent;
};

} // namespace velloren
