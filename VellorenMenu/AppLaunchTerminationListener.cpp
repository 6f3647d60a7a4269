#include "VellorenMenu/AppLaunchTerminationListener.h"

namespace velloren {

namespace {

const std::optional<std::vector<RunningApplication>>*
applicationsOf(const RunningApplicationsChange& change) {
    switch (change.kind) {
    case RunningApplicationsChange::Insertion:
        return &change.newApplications;
    case RunningApplicationsChange::Removal:
        return &change.oldApplications;
    default:
        return nullptr;
    }
}

} // namespace

AppLaunchTerminationListener::AppLaunchTerminationListener() {
    launchedApps.reserve(2);
}

void AppLaunchTerminationListener::observeValueForKeyPath(
    const std::optional<RunningApplicationsChange>& change, const void* context) {
    if (!change || context != &kvoContext)
        return;
    const auto* applications = applicationsOf(*change);
    if (!applications || !*applications)
        return;
    for (const RunningApplication& application : **applications) {
        if (application.bundleIdentifier == VApp(VApp::main).bundleIdentifier())
            refreshRunningCount(VApp::main);
        else if (application.bundleIdentifier == VApp(VApp::menu).bundleIdentifier())
            refreshRunningCount(VApp::menu);
    }
}

void AppLaunchTerminationListener::refreshRunningCount(VApp::Case app) {
    const auto entry = launchedApps.find(app);
    if (entry == launchedApps.end())
        return;
    const auto count = std::int64_t(VApp(app).runningInstances().size());
    if (const auto receiver = delegate.lock()) {
        if (count > entry->second)
            receiver->applicationDidLaunch(app);
        else if (count < entry->second)
            receiver->applicationDidTerminate(app);
    }
    entry->second = count;
}

} // namespace velloren
