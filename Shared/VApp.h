#pragma once

#include "Platform/Desktop/Workspace.h"

#include <string>
#include <vector>

namespace velloren {

/// The product's three processes. Main thread only, but for the constants.
class VApp {
  public:
    enum Case { main, menu, agent };

    constexpr VApp(Case identity) : identity(identity) {} // NOLINT(google-explicit-constructor): is the case

    /// Where the product's users write for help.
    [[nodiscard]] static const std::string& supportMailAddress();

    /// Where the product's help centre is on the web.
    [[nodiscard]] static const std::string& helpCenterHost();

    [[nodiscard]] const std::string& bundleIdentifier() const;

    /// One entry per running instance. Asking it of `agent` stops the process.
    [[nodiscard]] std::vector<RunningApplication> runningInstances() const;

    /// Whether any instance runs. Asking it of `agent` stops the process.
    [[nodiscard]] bool isRunning() const;

    /// Asks for a launch when no instance runs. Whether a launch was asked for, taken or not: the notice of
    /// the launch tells that it happened. Asking it of `agent` stops the process.
    bool launchIfNotRunning() const;

    friend constexpr bool operator==(VApp, VApp) = default;

  private:
    void stopUnlessObservable() const;

    Case identity;
};

} // namespace velloren
