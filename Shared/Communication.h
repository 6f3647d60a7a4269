#pragma once

#include "Platform/Link/Link.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace velloren {

/// Served by the main app on its own listener. The calls return at once; what comes back comes on the link's
/// thread. Those that answer nothing are requests, which the connection gives back when they were not
/// delivered.
class Communication {
  public:
    /// Each dictionary has texts under "id", "title" and "startTime", in the order the main app chose.
    using Meetings = std::optional<std::vector<Dictionary>>;
    using MeetingsReply = std::function<void(Meetings)>;

    Communication() = default;
    Communication(const Communication&) = delete;
    Communication& operator=(const Communication&) = delete;
    virtual ~Communication() = default;

    virtual void openMeetingWithId(const std::string& id) = 0;
    virtual void createNewMeeting() = 0;

    /// `reply` runs once when the main app answers, with none when its answer is no list.
    virtual void fetchUpcomingMeetings(MeetingsReply reply) = 0;

    virtual void displaySyncing() = 0;
    virtual void displayNotSyncing() = 0;
};

/// The interface as a connection takes it; its proxies are `Communication` objects.
[[nodiscard]] RemoteInterface communicationInterface();

/// Serves `implementation`, which outlives the result, to incoming connections.
[[nodiscard]] ExportedInterface exportedCommunication(Communication& implementation);

/// Calls on `target` what a proxy was called for and its connection gave back.
void repeatRequest(const Connection::Undelivered& request, Communication& target);

} // namespace velloren
