#include "Companions/MainAppStandIn/MeetingService.h"

namespace velloren {

namespace {

Dictionary dictionaryOf(const Meeting& meeting) {
    Dictionary dictionary;
    for (const auto& [key, value] : {std::pair("id", &meeting.id), std::pair("title", &meeting.title),
                                     std::pair("startTime", &meeting.startTime)}) {
        if (*value)
            dictionary.emplace(key, **value);
    }
    return dictionary;
}

} // namespace

void MeetingService::openMeetingWithId(const std::string& id) {
    log.add("open " + id);
}

void MeetingService::createNewMeeting() {
    log.add("create");
}

void MeetingService::fetchUpcomingMeetings(MeetingsReply reply) {
    log.add("fetch");
    const auto meetings = store.upcomingMeetings(true);
    if (!meetings) {
        reply(std::nullopt);
        return;
    }
    std::vector<Dictionary> list;
    for (const Meeting& meeting : *meetings)
        list.push_back(dictionaryOf(meeting));
    reply(std::move(list));
}

bool MeetingService::listenerShouldAcceptNewConnection(Listener&, IncomingConnection& connection) {
    connection.setExportedInterface(exportedCommunication(*this));
    return true;
}

} // namespace velloren
