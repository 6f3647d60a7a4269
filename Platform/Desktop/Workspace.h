#pragma once

#include "Platform/Foundation/SharedInstance.h"
#include "Platform/Foundation/Subscription.h"
#include "Platform/Foundation/URL.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace velloren {

/// What a workspace notice carries. Absent `userInfo`, an absent key and a value that is not a text all mean
/// that the notice tells nothing.
struct Notification {
    using Info = std::map<std::string, std::variant<std::monostate, std::string>, std::less<>>;

    std::optional<Info> userInfo;
};

/// One running instance of an application.
struct RunningApplication {
    std::string bundleIdentifier;
    std::string owner; ///< the instance's unique name on the session bus
};

/// The applications of this session: an application runs while it owns its bundle identifier as a name on the
/// session bus. Main thread only; asks nobody but the bus daemon.
class Workspace {
  public:
    enum class Notice { DidLaunchApplication, DidTerminateApplication };
    using Observer = std::function<void(const Notification&)>;

    Workspace() = default;
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;
    virtual ~Workspace() = default;

    /// The workspace of this session, provided through SharedInstance<Workspace>.
    static Workspace& shared() { return SharedInstance<Workspace>::get(); }

    /// Calls `observer` on every such notice for as long as the result lives. The text under
    /// "NSApplicationBundleIdentifier" in the notice's user info names the application.
    virtual Subscription addObserver(Notice notice, Observer observer) = 0;

    /// One entry per running instance; empty when none runs or the bus daemon does not answer.
    [[nodiscard]] virtual std::vector<RunningApplication>
    runningApplications(const std::string& bundleIdentifier) = 0;

    /// Whether any instance runs, as the notices tell it: nobody is asked for an application that is watched.
    [[nodiscard]] virtual bool isRunning(const std::string& bundleIdentifier) = 0;

    /// Asks for the application to be started and does not wait for it. Whether the request was taken.
    virtual bool launchApplication(const std::string& bundleIdentifier) = 0;

    /// Hands the address to the user's default program for it and does not wait for that. Whether the desktop
    /// took it.
    virtual bool openURL(const URL& url) = 0;
};

} // namespace velloren
