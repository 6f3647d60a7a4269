#pragma once

#include "Platform/Foundation/SharedInstance.h"
#include "Platform/Foundation/Subscription.h"
#include "Services/VModel.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace velloren {

/// The first of the upcoming meetings, and how many there are in all; none where they are too many to count
/// without delay.
struct NextMeetings {
    std::vector<Meeting> first;
    std::optional<std::size_t> count;

    friend bool operator==(const NextMeetings&, const NextMeetings&) = default;
};

/// The product's local store of meetings, read only. Main thread only.
class MeetingStore {
  public:
    MeetingStore() = default;
    MeetingStore(const MeetingStore&) = delete;
    MeetingStore& operator=(const MeetingStore&) = delete;
    virtual ~MeetingStore() = default;

    /// At most `most` of the upcoming meetings by start, earliest first when `ascending`. Absence means that
    /// the store could not be read; that answer too comes within 50 ms.
    [[nodiscard]] virtual std::optional<NextMeetings> upcomingMeetings(bool ascending, std::size_t most) = 0;

    /// Runs `changed` on the main loop each time that somebody may have written to the store, or put another
    /// in its place, until the result ends. What the system does not tell of is not noticed.
    virtual Subscription whenChanged(std::function<void()> changed) = 0;
};

/// Queries on the local store, which is provided through SharedInstance<MeetingStore>. Main thread only.
class MeetingFetcher {
  public:
    /// At most `most` of the user's next meetings by start date. Absence means that the store could not be
    /// read.
    [[nodiscard]] std::optional<NextMeetings> fetchNextMeetingsSortedByDate(bool ascending,
                                                                            std::size_t most) const {
        return SharedInstance<MeetingStore>::get().upcomingMeetings(ascending, most);
    }

    /// As the store's.
    Subscription whenChanged(std::function<void()> changed) const {
        return SharedInstance<MeetingStore>::get().whenChanged(std::move(changed));
    }
};

} // namespace velloren
