#pragma once

#include "Services/VFoundation.h"
#include "Services/VModel.h"

#include <filesystem>
#include <string>

namespace velloren {

/// The writing side of the product's meeting store, which it creates where it is missing. Main thread only;
/// trouble with the file throws.
class MeetingDatabase {
  public:
    explicit MeetingDatabase(std::filesystem::path file);

    /// `meetings.sqlite3` in the product's data folder.
    [[nodiscard]] static std::filesystem::path usualPath();

    /// Adds a meeting, or replaces the one with that identifier.
    void add(const std::string& id, const std::string& title, Date start);
    void clear();

    /// The title of a meeting; empty when there is no such meeting.
    [[nodiscard]] std::string titleOf(const std::string& id) const;

  private:
    std::filesystem::path file;
};

} // namespace velloren
