#pragma once

#include "Services/VFoundation.h"
#include "Services/VMeetingManager.h"

#include <filesystem>
#include <functional>
#include <memory>

namespace velloren {

/// The meeting store of the product, an SQLite file that the main app writes:
///
///     meeting(id TEXT PRIMARY KEY, title TEXT, start_time TEXT, start_utc INTEGER NOT NULL)
///
/// It is opened read-only for each query and never created. A store that is missing, locked, damaged, too
/// slow or of another form cannot be read. An upcoming meeting starts at this second or later; equal starts
/// are ordered by id. A field that is not a text is absent; a text is repaired, but what has an id that could
/// not be handed back is no meeting.
class LocalMeetingStore final : public MeetingStore {
  public:
    using Clock = std::function<Date()>;

    /// An empty path stands for a store that is never there.
    explicit LocalMeetingStore(std::filesystem::path file, Clock clock = systemClock);

    /// The store at its usual place, `meetings.sqlite3` in the product's data folder.
    [[nodiscard]] static std::unique_ptr<LocalMeetingStore> ofThisUser();

    [[nodiscard]] std::optional<NextMeetings> upcomingMeetings(bool ascending, std::size_t most) override;
    Subscription whenChanged(std::function<void()> changed) override;

  private:
    static Date systemClock();

    std::filesystem::path file;
    Clock clock;
};

} // namespace velloren
