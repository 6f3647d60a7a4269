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
  protected:
    inline static const std::string mainAppName = "com.velloren.velloren-mac";
    static const std::string binaries;

    MenuAgentTest();
    ~MenuAgentTest() override;

    void startAgent();
    /// From now on the bus starts this command when the registry is asked for.
    void installRegistry(const std::string& command);
    /// Has the bus start this main app when it is asked to.
    void installMainApp(const std::string& command);
    void installStandIn(const std::string& options = {});
    void installForeignMainApp(const std::string& options = {});

    /// Clicks the icon until the popover is open.
    void openPopover();
    bool closesWithin(const std::function<void()>& action);
    void clickOpenButton(int row);
    void clickCreateRow();

    [[nodiscard]] std::string log() const { return agent->output(); }

    [[nodiscard]] int countInLog(const std::string& text) const;
    bool waitForLog(const std::string& text, int times = 1);
    /// What the main app was asked, "fetch" left out.
    [[nodiscard]] std::vector<std::string> requests() const;
    bool waitForRequests(const std::vector<std::string>& expected);
    [[nodiscard]] std::vector<pid_t> mainAppProcesses() const;

    VirtualDesktop desktop;
    std::unique_ptr<Process> agent;
};

} // namespace velloren
