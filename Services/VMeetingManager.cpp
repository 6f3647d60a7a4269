#include "Services/VMeetingManager.h"

#include "Platform/Foundation/SharedInstance.h"

namespace velloren {

std::optional<std::vector<Meeting>> MeetingFetcher::fetchNextMeetingsSortedByDate(bool ascending) const {
    return SharedInstance<MeetingStore>::get().upcomingMeetings(ascending);
}

} // namespace velloren
