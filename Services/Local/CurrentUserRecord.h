#pragma once

#include <filesystem>
#include <optional>
#include <string>

/// The product's current user as it is kept in the shared defaults file, group `currentUser`: `id`, `email`,
/// `loggedIn`. Main thread only.
namespace velloren {

struct CurrentUserRecord {
    std::optional<std::string> id;
    std::optional<std::string> email;
    bool loggedIn = false;

    friend bool operator==(const CurrentUserRecord&, const CurrentUserRecord&) = default;
};

/// The file in the product's configuration folder; empty when the environment names no such folder.
[[nodiscard]] std::filesystem::path currentUserFile();

/// Reads the file afresh. Absence means that nobody is stored there: neither an id nor an email, or the file
/// cannot be read. What is not a Boolean in `loggedIn` reads as not logged in.
[[nodiscard]] std::optional<CurrentUserRecord> readCurrentUser(const std::filesystem::path& file);

/// For the program that owns the record; other contents of the file are kept.
void storeCurrentUser(const std::filesystem::path& file, const CurrentUserRecord& user);

} // namespace velloren
