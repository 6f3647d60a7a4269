#pragma once

#include "Companions/MainAppStandIn/RequestLog.h"
#include "Platform/Link/Link.h"
#include "Services/VMeetingManager.h"
#include "Shared/Communication.h"

namespace velloren {

/// What the main app does for others: it notes what it is asked and answers from the meeting store. It lets
/// in every process that the listener does. Main thread only.
class MeetingService final : public Communication, public ListenerDelegate {
  public:
    MeetingService(RequestLog& log, MeetingStore& store) : log(log), store(store) {}

    void openMeetingWithId(const std::string& id, Undelivered undelivered) override;
    void createNewMeeting(Undelivered undelivered) override;
    void fetchUpcomingMeetings(MeetingsReply reply) override;

    void displaySyncing() override {}

    void displayNotSyncing() override {}

    [[nodiscard]] bool listenerShouldAcceptNewConnection(Listener& listener,
                                                         IncomingConnection& connection) override;

  private:
    RequestLog& log;
    MeetingStore& store;
};

} // namespace velloren
