#pragma once

#include "Platform/Desktop/Application.h"
#include "Platform/Desktop/StatusBar.h"
#include "Platform/Desktop/Workspace.h"
#include "Platform/Link/Link.h"
#include "Platform/Views/Popover.h"
#include "VellorenMenu/AgentMenu.h"
#include "VellorenMenu/EventMonitor.h"
#include "VellorenMenu/MainAppLink.h"
#include "VellorenMenu/MenubarIcon.h"

#include <QPointer>

#include <memory>
#include <optional>

namespace velloren {

/// The agent's application delegate: start-up and termination, the notices of other applications, the agent's
/// own listener, and the popover. Its link to the main app is `MainAppLink`. Lives as long as the process;
/// main thread only, but for the two display operations.
class MenuAppDelegate final : public MainAppLink,
                              public ApplicationDelegate,
                              public ListenerDelegate,
                              public MenubarIconDelegate {
  public:
    explicit MenuAppDelegate(Link& link);
    ~MenuAppDelegate() override;

    /// How views reach it. None where the application has no delegate, or another one.
    [[nodiscard]] static MenuAppDelegate* ofApplication();

    void applicationDidFinishLaunching() override;
    void applicationShouldHandleReopen() override;
    [[nodiscard]] TerminateReply applicationShouldTerminate(const std::string& sender) override;
    void applicationWillTerminate() override;

    void appLaunched(const Notification& notification);
    void appTerminated(const Notification& notification);

    /// Make the icon show that the product is syncing, or is not. Any thread.
    void displaySyncing();
    void displayNotSyncing();

    /// Opens the popover at the icon, highlights the icon and watches for clicks elsewhere.
    void showPopover(QObject* sender);
    /// Undoes that. `sender` is the view that the user closed it with; there may be none.
    void closePopover(QObject* sender);
    void didMouseDown(MenubarIcon& icon) override;

    [[nodiscard]] MenubarIcon& icon() { return *menubarIcon; }

    [[nodiscard]] const Popover& popover() const { return popOver; }

  private:
    void mainAppConnected() override { itemMenu.refillSoon(); }

    void setupListeningForIncomingMethodCalls();
    void setupUI();
    void setupFabric();
    void removeListenerEndpoint();
    void display(MenubarIcon::State state, const char* function);
    void outsideClick(const Event* event);

    QPointer<QWidget> window;
    std::unique_ptr<Listener> menuAppListener;
    std::shared_ptr<Connection> menuAppListenerConnection;
    std::unique_ptr<StatusItem> statusBar;
    AgentMenu itemMenu;
    /// Owned by the status item's button once it was put there.
    QPointer<MenubarIcon> menubarIcon;
    Popover popOver;
    std::optional<EventMonitor> eventMonitor;
    Subscription launches;
    Subscription terminations;
};

/// Closes the popover in the name of a view in it; nothing where the application's delegate is not the
/// agent's.
void closePopover(QWidget& view);

} // namespace velloren
