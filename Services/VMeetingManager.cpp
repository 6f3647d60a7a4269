#include "Services/VMeetingManager.h"

#include "Platform/Foundation/SharedInstance.h"

namespace velloren {

std::optional<NextMeetings> MeetingFetcher::fetchNextMeetingsSortedByDate(bool ascending,
                                                                          std::size_t most) const {
    return SharedInstance<MeetingStore>::get().upcomingMeetings(ascending, most);
}

} // namespace velloren
