#pragma once

#include "Services/VUserManager.h"

#include <filesystem>
#include <memory>

namespace velloren {

/// Reads the current user from the defaults file that the product's processes share (see CurrentUserRecord).
class LocalUserManager final : public UserManager {
  public:
    /// An empty path stands for a file that is never there.
    explicit LocalUserManager(std::filesystem::path file);

    /// With the defaults file at its usual place.
    [[nodiscard]] static std::unique_ptr<LocalUserManager> ofThisUser();

    /// The description reads `<User id=7, email=ada@example.org, loggedIn=true>`, with nil for what is not
    /// known.
    [[nodiscard]] std::optional<User> forceReadCurrentUserFromNSUserDefaults() override;
    Subscription whenChanged(std::function<void()> changed) override;

  private:
    std::filesystem::path file;
};

} // namespace velloren
