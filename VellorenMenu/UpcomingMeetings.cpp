#include "VellorenMenu/UpcomingMeetings.h"

#include "Platform/Foundation/RunLoop.h"
#include "Platform/Foundation/TextIn.h"
#include "VellorenMenu/MainAppLink.h"

#include <algorithm>
#include <utility>

namespace velloren {

namespace {

std::vector<Meeting> meetingsFrom(const std::vector<Dictionary>& dictionaries) {
    std::vector<Meeting> meetings;
    meetings.reserve(dictionaries.size());
    for (const Dictionary& dictionary : dictionaries) {
        const auto text = [&](const char* key) -> std::optional<std::string> {
            const auto* value = textIn(dictionary, key);
            return value ? std::optional(*value) : std::nullopt;
        };
        meetings.push_back({text("id"), text("title"), text("startTime")});
    }
    return meetings;
}

} // namespace

std::span<const Meeting> shownMeetings(const FetchedMeetings& fetched) {
    if (!fetched)
        return {};
    return std::span(*fetched).first(std::min(fetched->size(), mostMeetingsShown));
}

std::optional<User> loggedInUser() {
    auto user = UserManager::sharedInstance().forceReadCurrentUserFromNSUserDefaults();
    return user && user->isLoggedIn() ? std::move(user) : std::nullopt;
}

void fetchFromMainApp(MainAppLink& link, std::function<void(const FetchedMeetings&)> completion) {
    link.fetchMeetings([completion = std::move(completion)](const Communication::Meetings& answer) {
        auto meetings = answer ? FetchedMeetings(meetingsFrom(*answer)) : std::nullopt;
        RunLoop::main().post([completion, meetings = std::move(meetings)] { completion(meetings); });
    });
}

} // namespace velloren
