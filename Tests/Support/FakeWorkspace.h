#pragma once

#include "Platform/Desktop/Workspace.h"
#include "Tests/Support/Installable.h"

#include <list>
#include <utility>

namespace velloren {

/// A workspace whose applications run when the test says so.
class FakeWorkspace final : public Installable<FakeWorkspace, Workspace> {
  public:
    std::map<std::string, int> instances;
    bool takesLaunches = true;
    std::vector<std::string> launches;
    std::vector<std::string> openedURLs;
    std::function<void()> asked = [] {}; ///< called when a launch or an address is asked for
    int queries = 0;

    void start(const std::string& identifier) {
        ++instances[identifier];
        post(Notice::DidLaunchApplication, about(identifier));
    }

    void stop(const std::string& identifier) {
        --instances[identifier];
        post(Notice::DidTerminateApplication, about(identifier));
    }

    static Notification about(const std::string& identifier) {
        return {Notification::Info{{"NSApplicationBundleIdentifier", identifier}}};
    }

    Subscription addObserver(Notice notice, Observer observer) override {
        const auto entry = observers.insert(observers.end(), {notice, std::move(observer)});
        return Subscription([this, entry] { observers.erase(entry); });
    }

    std::vector<RunningApplication> runningApplications(const std::string& identifier) override {
        ++queries;
        return {static_cast<std::size_t>(instances[identifier]), {identifier, ":1.0"}};
    }

    bool isRunning(const std::string& identifier) override { return instances[identifier] > 0; }

    bool launchApplication(const std::string& identifier) override {
        launches.push_back(identifier);
        asked();
        return takesLaunches;
    }

    bool openURL(const URL& url) override {
        openedURLs.push_back(url.absoluteString());
        asked();
        return takesLaunches;
    }

  private:
    void post(Notice notice, const Notification& notification) {
        for (const auto& [observed, observer] : std::list(observers)) {
            if (observed == notice)
                observer(notification);
        }
    }

    std::list<std::pair<Notice, Observer>> observers;
};

} // namespace velloren
