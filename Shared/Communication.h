#pragma once

#include "Platform/Link/Link.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace velloren {

/// Served by the main app on its own listener. The calls return at once; what comes back comes later. Those
/// that answer nothing are requests, which the connection gives back when they were not delivered.
class Communication {
  public:
    /// Each dictionary has texts under "id", "title" and "startTime", in the order the main app chose.
    using Meetings = std::optional<std::vector<Dictionary>>;
    using MeetingsReply = std::function<void(Meetings)>;
    using Undelivered = Channel::Undelivered;

    static constexpr AnswerLimit limit{10000, std::size_t(8) << 20U};

    Communication() = default;
    Communication(const Communication&) = delete;
    Communication& operator=(const Communication&) = delete;
    virtual ~Communication() = default;

    /// `undelivered`, which may be none, is the business of the caller's connection alone.
    virtual void openMeetingWithId(const std::string& id, Undelivered undelivered) = 0;
    virtual void createNewMeeting(Undelivered undelivered) = 0;

    /// `reply` runs once when the main app answers, with none when its answer is no list.
    virtual void fetchUpcomingMeetings(MeetingsReply reply) = 0;

    virtual void displaySyncing() = 0;
    virtual void displayNotSyncing() = 0;
};

/// The interface as a connection takes it; its proxies are `Communication` objects.
[[nodiscard]] RemoteInterface communicationInterface();

/// Serves `implementation`, which outlives the result, to incoming connections.
[[nodiscard]] ExportedInterface exportedCommunication(Communication& implementation);

} // namespace velloren
