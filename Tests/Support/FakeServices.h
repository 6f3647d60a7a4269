#pragma once

#include "CrashReporting/Crashlytics.h"
#include "Platform/Foundation/SharedInstance.h"
#include "Platform/Foundation/UserDefaults.h"
#include "Services/VMeetingManager.h"
#include "Services/VSyncManager.h"
#include "Services/VUserManager.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velloren {

class FakeMeetingStore final : public MeetingStore {
  public:
    static FakeMeetingStore& install() {
        SharedInstance<MeetingStore>::provide([] { return std::make_unique<FakeMeetingStore>(); });
        return static_cast<FakeMeetingStore&>(SharedInstance<MeetingStore>::get());
    }

    std::optional<std::vector<Meeting>> meetings = std::vector<Meeting>();
    std::vector<bool> queries; ///< whether each asked for ascending order

    std::optional<std::vector<Meeting>> upcomingMeetings(bool ascending) override {
        queries.push_back(ascending);
        return meetings;
    }
};

class FakeSyncManager final : public SyncManager {
  public:
    static FakeSyncManager& install() {
        SharedInstance<SyncManager>::provide([] { return std::make_unique<FakeSyncManager>(); });
        return static_cast<FakeSyncManager&>(SyncManager::sharedInstance());
    }

    bool syncing = false;

    bool isSyncing() override { return syncing; }
};

class FakeCrashlytics final : public Crashlytics {
  public:
    static FakeCrashlytics& install() {
        SharedInstance<Crashlytics>::provide([] { return std::make_unique<FakeCrashlytics>(); });
        return static_cast<FakeCrashlytics&>(Crashlytics::sharedInstance());
    }

    /// For each start, what the defaults then said of exceptions.
    std::vector<std::optional<bool>> starts;

    void start() override {
        starts.push_back(UserDefaults::standardUserDefaults().boolForKey("NSApplicationCrashOnExceptions"));
    }
};

class FakeUserManager final : public UserManager {
  public:
    static FakeUserManager& install() {
        SharedInstance<UserManager>::provide([] { return std::make_unique<FakeUserManager>(); });
        return static_cast<FakeUserManager&>(UserManager::sharedInstance());
    }

    enum class Stored { Nobody, LoggedOut, LoggedIn };
    Stored stored = Stored::LoggedIn;

    std::unique_ptr<User> forceReadCurrentUserFromNSUserDefaults() override {
        if (stored == Stored::Nobody)
            return nullptr;
        return std::make_unique<FakeUser>(stored == Stored::LoggedIn);
    }

  private:
    class FakeUser final : public User {
      public:
        explicit FakeUser(bool loggedIn) : loggedIn(loggedIn) {}

        [[nodiscard]] bool isLoggedIn() const override { return loggedIn; }

        [[nodiscard]] std::string description() const override { return "<User ada>"; }

      private:
        bool loggedIn;
    };
};

} // namespace velloren
