#include "Services/VMeetingManager.h"

#include "Platform/Foundation/SharedInstance.h"

#include <utility>

namespace velloren {

std::optional<NextMeetings> MeetingFetcher::fetchNextMeetingsSortedByDate(bool ascending,
                                                                          std::size_t most) const {
    return SharedInstance<MeetingStore>::get().upcomingMeetings(ascending, most);
}

Subscription MeetingFetcher::whenChanged(std::function<void()> changed) const {
    return SharedInstance<MeetingStore>::get().whenChanged(std::move(changed));
}

} // namespace velloren
