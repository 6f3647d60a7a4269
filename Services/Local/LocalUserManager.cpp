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

} // namespace

LocalUserManager::LocalUserManager(std::filesystem::path file) : file(std::move(file)) {}

std::unique_ptr<LocalUserManager> LocalUserManager::ofThisUser() {
    return std::make_unique<LocalUserManager>(currentUserFile());
}

std::optional<User> LocalUserManager::forceReadCurrentUserFromNSUserDefaults() {
    const auto user = readCurrentUser(file);
    if (!user)
        return std::nullopt;
    return User(user->loggedIn, "<User id=" + printed(user->id) + ", email=" + printed(user->email) +
                                    ", loggedIn=" + (user->loggedIn ? "true" : "false") + ">");
}

Subscription LocalUserManager::whenChanged(std::function<void()> changed) {
    return watchFile(file, {}, std::move(changed));
}

} // namespace velloren
