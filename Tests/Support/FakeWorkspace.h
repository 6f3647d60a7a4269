#pragma once

#include "Platform/Desktop/Workspace.h"
#include "Platform/Foundation/SharedInstance.h"

#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace velloren {

/// A workspace whose applications run when the test says so.
class FakeWorkspace final : public Workspace {
  public:
    /// Makes a fake workspace the process's own and returns it.
    static FakeWorkspace& install() {
        SharedInstance<Workspace>::provide([] { return std::make_unique<FakeWorkspace>(); });
        return static_cast<FakeWorkspace&>(Workspace::shared());
    }

    std::map<std::string, int> instances;
    bool takesLaunches = true;
    std::vector<std::string> launches;
    std::vector<std::string> openedURLs;
    int queries = 0;

    void post(Notice notice, const Notification& notification) {
        const auto told = observers;
        for (const auto& [observed, observer] : told) {
            if (observed == notice)
                observer(notification);
        }
    }

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

    [[nodiscard]] std::size_t observerCount() const { return observers.size(); }

    Subscription addObserver(Notice notice, Observer observer) override {
        const auto entry = observers.insert(observers.end(), {notice, std::move(observer)});
        return Subscription([this, entry] { observers.erase(entry); });
    }

    std::vector<RunningApplication> runningApplications(const std::string& identifier) override {
        ++queries;
        std::vector<RunningApplication> running;
        running.reserve(static_cast<std::size_t>(instances[identifier]));
        for (int index = 0; index < instances[identifier]; ++index)
            running.push_back({identifier, ":1." + std::to_string(index)});
        return running;
    }

    bool launchApplication(const std::string& identifier) override {
        launches.push_back(identifier);
        return takesLaunches;
    }

    bool openURL(const URL& url) override {
        openedURLs.push_back(url.absoluteString());
        return takesLaunches;
    }

  private:
    std::list<std::pair<Notice, Observer>> observers;
};

} // namespace velloren
