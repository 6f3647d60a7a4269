#include "VellorenMenu/AgentMenu.h"

#include "Services/VMeetingManager.h"
#include "Shared/VApp.h"
#include "VellorenMenu/MenuAppDelegate.h"
#include "VellorenMenu/UpcommingMeetingItemView.h"

namespace velloren {

namespace {

/// The time first: it is the agent's own text, so a title in another script, or one that hosts cut, cannot
/// move or hide it.
std::string textOf(const Meeting& meeting) {
    const auto time = meeting.startTime
                          ? UpcommingMeetingItemView::relativeDateFromDateString(*meeting.startTime)
                          : std::nullopt;
    std::string title = meeting.title.value_or("");
    if (!time)
        return title;
    return title.empty() ? *time : *time + " – " + title;
}

} // namespace

AgentMenu::AgentMenu(StatusMenu& menu, MenuAppDelegate& delegate) : menu(menu), delegate(delegate) {
    menu.setAboutToShowHandler([this] { aboutToShow(); });
}

AgentMenu::~AgentMenu() {
    menu.setAboutToShowHandler(nullptr);
}

void AgentMenu::aboutToShow() {
    const unsigned showing = ++showings;
    if (!loggedInUser()) {
        list(std::nullopt, Session::LoggedOut);
        return;
    }
    const auto next = MeetingFetcher().fetchNextMeetingsSortedByDate(true, mostMeetingsShown);
    list(next ? FetchedMeetings(next->first) : std::nullopt, Session::LoggedIn);
    if (!VApp(VApp::main).isRunning())
        return;
    fetchFromMainApp(delegate, [this, showing](const FetchedMeetings& meetings) {
        if (showing == showings)
            list(meetings, Session::LoggedIn);
    });
}

void AgentMenu::list(const FetchedMeetings& fetched, Session session) {
    std::vector<StatusMenuEntry> entries;
    for (const Meeting& meeting : shownMeetings(fetched))
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
