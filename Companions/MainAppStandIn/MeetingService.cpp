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

/// In bytes, of its texts.
std::size_t sizeOf(const Dictionary& dictionary) {
    std::size_t size = 0;
    for (const auto& [key, value] : dictionary)
        size += key.size() + std::get<std::string>(value).size();
    return size;
}

} // namespace

void MeetingService::openMeetingWithId(const std::string& id, Undelivered) {
    log.add("open " + id);
}

void MeetingService::createNewMeeting(Undelivered) {
    log.add("create");
}

void MeetingService::fetchUpcomingMeetings(MeetingsReply reply) {
    log.add("fetch");
    const auto next = store.upcomingMeetings(true, limit.dictionaries);
    if (!next) {
        reply(std::nullopt);
        return;
    }
    std::vector<Dictionary> list;
    std::size_t room = limit.bytes;
    for (const Meeting& meeting : next->first) {
        Dictionary dictionary = dictionaryOf(meeting);
        const std::size_t size = sizeOf(dictionary);
        if (size > room)
            break; // what is more no agent takes
        room -= size;
        list.push_back(std::move(dictionary));
    }
    reply(std::move(list));
}

bool MeetingService::listenerShouldAcceptNewConnection(Listener&, IncomingConnection& connection) {
    connection.setExportedInterface(exportedCommunication(*this));
    return true;
}

} // namespace velloren
