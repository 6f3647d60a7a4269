#pragma once

#include "CrashReporting/Crashlytics.h"
#include "Platform/Foundation/UserDefaults.h"
#include "Services/VMeetingManager.h"
#include "Services/VSyncManager.h"
#include "Services/VUserManager.h"
#include "Tests/Support/Installable.h"

namespace velloren {

class FakeMeetingStore final : public Installable<FakeMeetingStore, MeetingStore> {
  public:
    std::optional<std::vector<Meeting>> meetings = std::vector<Meeting>();
    std::vector<bool> queries; ///< whether each asked for ascending order

    std::optional<std::vector<Meeting>> upcomingMeetings(bool ascending) override {
        queries.push_back(ascending);
        return meetings;
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

    std::unique_ptr<User> forceReadCurrentUserFromNSUserDefaults() override {
        struct Ada final : User {
            bool loggedIn = false;

            [[nodiscard]] bool isLoggedIn() const override { return loggedIn; }

            [[nodiscard]] std::string description() const override { return "<User ada>"; }
        };

        auto user = std::make_unique<Ada>();
        user->loggedIn = stored == Stored::LoggedIn;
        return stored == Stored::Nobody ? nullptr : std::move(user);
    }
};

} // namespace velloren
