#include "Companions/MainAppStandIn/MeetingService.h"

namespace velloren {

namespace {

constexpr std::size_t mostSent = 10'000; // more than that no agent takes

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
    const auto next = store.upcomingMeetings(true, mostSent);
    if (!next) {
        reply(std::nullopt);
        return;
    }
    std::vector<Dictionary> list;
    for (const Meeting& meeting : next->first)
        list.push_back(dictionaryOf(meeting));
    reply(std::move(list));
}

bool MeetingService::listenerShouldAcceptNewConnection(Listener&, IncomingConnection& connection) {
    connection.setExportedInterface(exportedCommunication(*this));
    return true;
}

} // namespace velloren
