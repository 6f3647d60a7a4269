#pragma once

#include "CrashReporting/Crashlytics.h"
#include "Platform/Foundation/UserDefaults.h"
#include "Services/VMeetingManager.h"
#include "Services/VSyncManager.h"
#include "Services/VUserManager.h"
#include "Tests/Support/Installable.h"

#include <algorithm>

namespace velloren {

class FakeMeetingStore final : public Installable<FakeMeetingStore, MeetingStore> {
  public:
    std::optional<std::vector<Meeting>> meetings = std::vector<Meeting>();
    std::vector<bool> queries; ///< whether each asked for ascending order

    bool counts = true; ///< else there are too many

    std::optional<NextMeetings> upcomingMeetings(bool ascending, std::size_t most) override {
        queries.push_back(ascending);
        if (!meetings)
            return std::nullopt;
        const std::size_t size = meetings->size();
        const auto end = meetings->begin() + std::ptrdiff_t(std::min(most, size));
        return NextMeetings{{meetings->begin(), end}, counts ? std::optional(size) : std::nullopt};
    }

    std::function<void()> changed; ///< none while nobody asked to be told

    Subscription whenChanged(std::function<void()> handler) override {
        changed = std::move(handler);
        return Subscription([this] { changed = nullptr; });
    }
};

class FakeSyncManager final : public Installable<FakeSyncManager, SyncManager> {
  public:
    bool syncing = false;

    bool isSyncing() override { return syncing; }
};

class FakeCrashlytics final : public Installable<FakeCrashlytics, Crashlytics> {
  public:
    /// For each start, what the defaults then said of exceptions.
    std::vector<std::optional<bool>> starts;

    void start() override {
        starts.push_back(UserDefaults::standardUserDefaults().boolForKey("NSApplicationCrashOnExceptions"));
    }
};

class FakeUserManager final : public Installable<FakeUserManager, UserManager> {
  public:
    enum class Stored { Nobody, LoggedOut, LoggedIn };
    Stored stored = Stored::LoggedIn;

    std::optional<User> forceReadCurrentUserFromNSUserDefaults() override {
        if (stored == Stored::Nobody)
            return std::nullopt;
        return User(stored == Stored::LoggedIn, "<User ada>");
    }

    std::function<void()> changed; ///< none while nobody asked to be told

    Subscription whenChanged(std::function<void()> handler) override {
        changed = std::move(handler);
        return Subscription([this] { changed = nullptr; });
    }
};

} // namespace velloren
