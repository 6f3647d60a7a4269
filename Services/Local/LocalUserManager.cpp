#include "Services/Local/LocalUserManager.h"

#include "Services/Local/CurrentUserRecord.h"
#include "Services/Local/FileWatch.h"
#include "Services/Local/Text.h"

#include <utility>

namespace velloren {

namespace {

std::string printed(const std::optional<std::string>& field) {
    return field ? printableLine(*field) : "nil";
}

class StoredUser final : public User {
  public:
    explicit StoredUser(CurrentUserRecord record) : record(std::move(record)) {}

    [[nodiscard]] bool isLoggedIn() const override { return record.loggedIn; }

    [[nodiscard]] std::string description() const override {
        return "<User id=" + printed(record.id) + ", email=" + printed(record.email) +
               ", loggedIn=" + (record.loggedIn ? "true" : "false") + ">";
    }

  private:
    CurrentUserRecord record;
};

} // namespace

LocalUserManager::LocalUserManager(std::filesystem::path file) : file(std::move(file)) {}

std::unique_ptr<LocalUserManager> LocalUserManager::ofThisUser() {
    return std::make_unique<LocalUserManager>(currentUserFile());
}

std::unique_ptr<User> LocalUserManager::forceReadCurrentUserFromNSUserDefaults() {
    auto record = readCurrentUser(file);
    return record ? std::make_unique<StoredUser>(*std::move(record)) : nullptr;
}

Subscription LocalUserManager::whenChanged(std::function<void()> changed) {
    return watchFile(file, {}, std::move(changed));
}

} // namespace velloren
