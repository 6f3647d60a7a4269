#pragma once

#include "Services/VModel.h"

#include <optional>
#include <vector>

namespace velloren {

/// The product's local store of meetings, read only. Main thread only.
class MeetingStore {
  public:
    MeetingStore() = default;
    MeetingStore(const MeetingStore&) = delete;
    MeetingStore& operator=(const MeetingStore&) = delete;
    virtual ~MeetingStore() = default;

    /// The upcoming meetings by start, earliest first when `ascending`. Absence means that the store could
    /// not be read; that answer too comes within 50 ms.
    [[nodiscard]] virtual std::optional<std::vector<Meeting>> upcomingMeetings(bool ascending) = 0;
};

/// Queries on the local store, which is provided through SharedInstance<MeetingStore>. Main thread only.
class MeetingFetcher {
  public:
    /// The user's next meetings by start date. Absence means that the store could not be read.
    [[nodiscard]] std::optional<std::vector<Meeting>> fetchNextMeetingsSortedByDate(bool ascending) const;
};

} // namespace velloren
