#pragma once

#include "Platform/Desktop/StatusMenu.h"
#include "Platform/Foundation/Subscription.h"
#include "VellorenMenu/ActionItems.h"
#include "VellorenMenu/UpcomingMeetings.h"

namespace velloren {

class MenuAppDelegate;

/// What the popover offers, as the menu of the status item: the upcoming meetings, the creation of one, and
/// the action menu's items. Hosts size a menu before it is about to show: from the first time that one asks
/// for it, it is filled afresh as soon as its content may be another, too. It lists what the main app answers
/// where that runs, else what the store has. Outlives the tasks that it leaves on the main run loop, and
/// every answer of the main app. Main thread only.
class AgentMenu {
  public:
    /// Both outlive this.
    AgentMenu(StatusMenu& menu, MenuAppDelegate& delegate);
    AgentMenu(const AgentMenu&) = delete;
    AgentMenu& operator=(const AgentMenu&) = delete;
    ~AgentMenu();

    /// There may be other meetings, which nothing else tells of: fills the menu in a moment, where a host has
    /// asked for it.
    void refillSoon();

  private:
    enum class Session { LoggedOut, LoggedIn };

    /// What this machine's files tell.
    struct LocalState {
        Session session = Session::LoggedOut;
        FetchedMeetings meetings;

        friend bool operator==(const LocalState&, const LocalState&) = default;
    };

    [[nodiscard]] static LocalState read();
    void aboutToShow();
    void lookSoon();
    void fill(const LocalState& now);
    void list(const FetchedMeetings& answer, Session session);
    void refillWhenOutdated(std::span<const Meeting> listed);
    [[nodiscard]] StatusMenuEntry entryOf(const Meeting& meeting) const;
    [[nodiscard]] StatusMenuEntry entryOf(ActionItem item) const;

    StatusMenu& menu;
    MenuAppDelegate& delegate;
    LocalState localState;
    unsigned latestFilling = 0;
    bool mainAppHasAnswered = false; ///< to the latest filling
    bool isFollowed = false;
    bool lookIsDue = false;
    bool refillIsDue = false;
    Subscription storeChanges;
    Subscription userChanges;
    Subscription expiry;
};

} // namespace velloren
