#pragma once

#include "Platform/Desktop/Workspace.h"
#include "Shared/VApp.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

namespace velloren {

/// Told when a process of the product gains or loses running instances.
class AppLaunchTerminationListenerDelegate {
  public:
    AppLaunchTerminationListenerDelegate() = default;
    AppLaunchTerminationListenerDelegate(const AppLaunchTerminationListenerDelegate&) = delete;
    AppLaunchTerminationListenerDelegate& operator=(const AppLaunchTerminationListenerDelegate&) = delete;
    virtual ~AppLaunchTerminationListenerDelegate() = default;

    virtual void applicationDidLaunch(VApp app) = 0;
    virtual void applicationDidTerminate(VApp app) = 0;
};

/// A change of an observed list of running applications. An absent list is one that is missing or holds
/// something else; an application without an identifier has an empty one.
struct RunningApplicationsChange {
    enum Kind : std::uint64_t { Setting = 1, Insertion = 2, Removal = 3, Replacement = 4 };

    std::uint64_t kind = Setting;
    std::optional<std::vector<RunningApplication>> newApplications;
    std::optional<std::vector<RunningApplication>> oldApplications;
};

/// Watches the list of running applications and reports each change in the number of instances of the main
/// app and of the menu agent. It registers nothing itself: whoever makes one passes it the changes, with the
/// address of `kvoContext`, and stops before it goes. It reports nothing for an application it holds no count
/// of. Runs on the thread that delivers the changes, one after another.
class AppLaunchTerminationListener {
  public:
    AppLaunchTerminationListener();
    AppLaunchTerminationListener(const AppLaunchTerminationListener&) = delete;
    AppLaunchTerminationListener& operator=(const AppLaunchTerminationListener&) = delete;
    virtual ~AppLaunchTerminationListener() = default;

    std::weak_ptr<AppLaunchTerminationListenerDelegate> delegate;
    /// Its address marks the listener's own registration; its value means nothing.
    std::int64_t kvoContext = 0;

    /// Does nothing without a change, with another context, or for a kind other than insertion and removal.
    void observeValueForKeyPath(const std::optional<RunningApplicationsChange>& change, const void* context);

  protected:
    /// The last known number of instances.
    std::unordered_map<VApp::Case, std::int64_t> launchedApps;

  private:
    void refreshRunningCount(VApp::Case app);
};

} // namespace velloren
