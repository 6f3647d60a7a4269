#pragma once

#include "Platform/Foundation/SharedInstance.h"
#include "Platform/Foundation/Subscription.h"

#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace velloren {

/// The product's user, opaque but for these two.
class User {
  public:
    User(bool loggedIn, std::string printed) : loggedIn(loggedIn), printed(std::move(printed)) {}

    [[nodiscard]] bool isLoggedIn() const { return loggedIn; }

    /// A printed form for log lines, one line without control characters.
    [[nodiscard]] const std::string& description() const { return printed; }

  private:
    bool loggedIn;
    std::string printed;
};

/// Knows the product's current user. Main thread only.
class UserManager {
  public:
    UserManager() = default;
    UserManager(const UserManager&) = delete;
    UserManager& operator=(const UserManager&) = delete;
    virtual ~UserManager() = default;

    /// The process-wide instance, made on first use by the maker in SharedInstance<UserManager>.
    static UserManager& sharedInstance() { return SharedInstance<UserManager>::get(); }

    /// The current user, read afresh from the defaults that the product shares. None when nobody is stored
    /// there or the defaults cannot be read.
    [[nodiscard]] virtual std::optional<User> forceReadCurrentUserFromNSUserDefaults() = 0;

    /// Runs `changed` on the main loop each time that somebody may have written to those defaults, until the
    /// result ends. What the system does not tell of is not noticed.
    virtual Subscription whenChanged(std::function<void()> changed) = 0;
};

} // namespace velloren
