#include "VellorenMenu/AgentMenu.h"

#include "Platform/Foundation/RunLoop.h"
#include "Services/VMeetingManager.h"
#include "Shared/VApp.h"
#include "VellorenMenu/DateTexts.h"
#include "VellorenMenu/MenuAppDelegate.h"

#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace velloren {

namespace {

constexpr RunLoop::Seconds moment(0.25); // a synchronisation writes many meetings one after another
constexpr std::chrono::days farAway(366);
constexpr std::chrono::seconds untilPast(1); // a meeting is upcoming through the second that it starts in

constexpr std::size_t mostLookedAt = 512; // bytes; hosts show less of a title

bool readsRightToLeft(const std::string& text) {
    const auto length = std::int32_t(std::min(text.size(), mostLookedAt));
    const auto characters = icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), length));
    for (std::int32_t index = 0; index < characters.length(); index = characters.moveIndex32(index, 1)) {
        const auto direction = u_charDirection(characters.char32At(index));
        if (direction == U_RIGHT_TO_LEFT || direction == U_RIGHT_TO_LEFT_ARABIC)
            return true;
    }
    return false;
}

std::string isolated(const std::string& text) {
    return "\u2068" + text + "\u2069";
}

/// The time first: it is the agent's own text, so a title in another script, or one that hosts cut, cannot
/// move or hide it.
std::string textOf(const Meeting& meeting) {
    const auto time =
        meeting.startTime ? relativeDate(*meeting.startTime, RunLoop::main().now()) : std::nullopt;
    std::string title = meeting.title.value_or("");
    if (!time)
        return title;
    if (title.empty())
        return *time;
    // Numbers and signs would go to whichever side the text of the other direction is on.
    if (readsRightToLeft(*time) || readsRightToLeft(title))
        return isolated(*time) + " – " + isolated(title);
    return *time + " – " + title;
}

} // namespace

AgentMenu::AgentMenu(StatusMenu& menu, MenuAppDelegate& delegate) : menu(menu), delegate(delegate) {
    menu.setAboutToShowHandler([this] { aboutToShow(); });
}

AgentMenu::~AgentMenu() {
    menu.setAboutToShowHandler(nullptr);
}

AgentMenu::LocalState AgentMenu::read() {
    if (!loggedInUser())
        return {};
    auto next = MeetingFetcher().fetchNextMeetingsSortedByDate(true, mostMeetingsShown);
    return {Session::LoggedIn, next ? FetchedMeetings(std::move(next->first)) : std::nullopt};
}

void AgentMenu::aboutToShow() {
    if (!std::exchange(isFollowed, true)) {
        storeChanges = MeetingFetcher().whenChanged([this] { lookSoon(); });
        userChanges = UserManager::sharedInstance().whenChanged([this] { lookSoon(); });
    }
    fill(read());
}

void AgentMenu::refillSoon() {
    refillIsDue = true;
    lookSoon();
}

void AgentMenu::lookSoon() {
    if (!isFollowed || std::exchange(lookIsDue, true))
        return;
    RunLoop::main().postAfter(moment, [this] {
        lookIsDue = false;
        // Most of what is written is not about the next meetings. A main app that writes whenever it is asked
        // would be asked for ever.
        if (const LocalState now = read(); refillIsDue || now != localState)
            fill(now);
    });
}

void AgentMenu::fill(const LocalState& now) {
    const unsigned filling = ++latestFilling;
    refillIsDue = false;
    const bool mainAppRuns = VApp(VApp::main).isRunning();
    // An answer stands until the next one, but for a main app that does not give one.
    const bool listsAnswer = std::exchange(mainAppHasAnswered, false) && mainAppRuns;
    localState = now;
    if (now.session == Session::LoggedOut || !listsAnswer)
        list(now.meetings, now.session);
    if (now.session == Session::LoggedOut || !mainAppRuns)
        return;
    fetchFromMainApp(delegate, [this, filling](const FetchedMeetings& meetings) {
        if (filling != latestFilling)
            return;
        mainAppHasAnswered = true;
        list(meetings, Session::LoggedIn);
    });
}

void AgentMenu::refillWhenOutdated(std::span<const Meeting> meetings) {
    const Date now = RunLoop::main().now();
    Date next = now + farAway;
    for (const Meeting& meeting : meetings) {
        const auto start =
            meeting.startTime ? meetingDateFormatter().dateFromString(*meeting.startTime) : std::nullopt;
        if (!start)
            continue;
        next = std::min(next, nextChangeOfRelativeDate(*start, now));
        if (*start >= now)
            next = std::min<Date>(next, *start + untilPast);
    }
    expiry = RunLoop::main().postAt(next, [this] { fill(read()); });
}

void AgentMenu::list(const FetchedMeetings& answer, Session session) {
    std::vector<StatusMenuEntry> entries;
    const auto meetings = shownMeetings(answer);
    for (const Meeting& meeting : meetings)
        entries.push_back(entryOf(meeting));
    if (entries.empty())
        entries.push_back({StatusMenuEntry::Kind::Item, "no meetings", "No upcoming meetings", nullptr});
    if (session == Session::LoggedIn)
        entries.push_back({StatusMenuEntry::Kind::Item, "create", "Create a new meeting", [this] {
                               delegate.closePopover(nullptr);
                               delegate.createNewMeeting();
                           }});
    entries.push_back({StatusMenuEntry::Kind::Separator, {}, {}, nullptr});
    for (const ActionItem item : actionItems) {
        if (item != ActionItem::Separator) // one is enough in a menu that hosts draw
            entries.push_back(entryOf(item));
    }
    menu.setEntries(std::move(entries));
    refillWhenOutdated(meetings);
}

StatusMenuEntry AgentMenu::entryOf(const Meeting& meeting) const {
    StatusMenuEntry entry{StatusMenuEntry::Kind::Item, "meeting", textOf(meeting), nullptr};
    if (meeting.id) {
        entry.key += " " + *meeting.id;
        entry.action = [this, id = *meeting.id] {
            delegate.closePopover(nullptr);
            delegate.openMeeting(id);
        };
    }
    return entry;
}

StatusMenuEntry AgentMenu::entryOf(ActionItem item) const {
    const std::string title = titleOf(item);
    return {StatusMenuEntry::Kind::Item, title, title,
            [this, item] { perform(item, [this] { delegate.closePopover(nullptr); }); }};
}

} // namespace velloren
