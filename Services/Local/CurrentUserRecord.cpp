#include "Services/Local/CurrentUserRecord.h"

#include "Platform/Foundation/Directories.h"
#include "Platform/Foundation/UserDefaults.h"

namespace velloren {

namespace {

constexpr const char* idKey = "currentUser/id";
constexpr const char* emailKey = "currentUser/email";
constexpr const char* loggedInKey = "currentUser/loggedIn";

std::optional<std::string> filledStringForKey(const UserDefaults& defaults, const char* key) {
    auto value = defaults.stringForKey(key);
    return value && !value->empty() ? value : std::nullopt;
}

} // namespace

std::filesystem::path currentUserFile() {
    const auto folder = directories::configuration();
    return folder ? *folder / "com.velloren.velloren-mac.ini" : std::filesystem::path();
}

std::optional<CurrentUserRecord> readCurrentUser(const std::filesystem::path& file) {
    const UserDefaults defaults(file);
    CurrentUserRecord user{.id = filledStringForKey(defaults, idKey),
                           .email = filledStringForKey(defaults, emailKey),
                           .loggedIn = defaults.boolForKey(loggedInKey).value_or(false)};
    if (!user.id && !user.email)
        return std::nullopt;
    return user;
}

void storeCurrentUser(const std::filesystem::path& file, const CurrentUserRecord& user) {
    UserDefaults(file).set(
        {{idKey, user.id}, {emailKey, user.email}, {loggedInKey, user.loggedIn ? "true" : "false"}});
}

} // namespace velloren
