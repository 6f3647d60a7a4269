#include "Shared/VApp.h"

#include "Platform/Foundation/FatalError.h"
#include "Services/VLogger.h"

#include <array>

namespace velloren {

namespace {

struct [[maybe_unused]] SchemeConfig {};

constexpr auto agentIsNotObservable = "Agent doesn't support this functionality. We need to re-architect XPC "
                                      "solution, see https://issues.velloren.example/menu/agent-instances";

} // namespace

const std::string& VApp::supportMailAddress() {
    static const std::string address = "support@velloren.example";
    return address;
}

const std::string& VApp::helpCenterHost() {
    static const std::string host = "help.velloren.example";
    return host;
}

const std::string& VApp::bundleIdentifier() const {
    static const std::array<std::string, 3> identifiers{
        "com.velloren.velloren-mac", "com.velloren.velloren-mac.menu", "com.velloren.velloren-mac.agent"};
    return identifiers.at(std::size_t(identity));
}

std::vector<RunningApplication> VApp::runningInstances() const {
    stopUnlessObservable();
    return Workspace::shared().runningApplications(bundleIdentifier());
}

bool VApp::isRunning() const {
    stopUnlessObservable();
    return Workspace::shared().isRunning(bundleIdentifier());
}

bool VApp::launchIfNotRunning() const {
    stopUnlessObservable();
    // Asked, not taken from the notices: one that has just ended would be taken for running, and not
    // launched.
    if (!runningInstances().empty())
        return false;
    const bool launched = Workspace::shared().launchApplication(bundleIdentifier());
    Logger::sharedInstance().info("Launching " + bundleIdentifier() +
                                      ", launched=" + (launched ? "true" : "false"),
                                  {"Shared/VApp", "launchIfNotRunning()", 94});
    return true;
}

void VApp::stopUnlessObservable() const {
    if (identity == agent)
        fatalError(agentIsNotObservable, "Shared/VApp", 83);
}

} // namespace velloren
