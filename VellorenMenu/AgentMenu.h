#pragma once

#include "Platform/Desktop/StatusMenu.h"
#include "VellorenMenu/ActionItems.h"
#include "VellorenMenu/UpcomingMeetings.h"

namespace velloren {

class MenuAppDelegate;

/// What the popover offers, as the menu of the status item: the upcoming meetings, the creation of one, and
/// the action menu's items. It is filled afresh whenever it is about to show: at once with the store's
/// meetings, then, where the main app runs, with its answer. Outlives every answer of the main app.
/// Main thread only.
class AgentMenu {
  public:
    /// Both outlive this.
    AgentMenu(StatusMenu& menu, MenuAppDelegate& delegate);
    AgentMenu(const AgentMenu&) = delete;
    AgentMenu& operator=(const AgentMenu&) = delete;
    ~AgentMenu();

  private:
    enum class Session { LoggedOut, LoggedIn };

    void aboutToShow();
    void list(const FetchedMeetings& fetched, Session session);
    [[nodiscard]] StatusMenuEntry entryOf(const Meeting& meeting) const;
    [[nodiscard]] StatusMenuEntry entryOf(ActionItem item) const;

    StatusMenu& menu;
    MenuAppDelegate& delegate;
    unsigned showings = 0;
};

} // namespace velloren
