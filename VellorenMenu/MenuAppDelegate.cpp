#include "VellorenMenu/MenuAppDelegate.h"

#include "CrashReporting/Crashlytics.h"
#include "Platform/Foundation/FatalError.h"
#include "Platform/Foundation/RunLoop.h"
#include "Platform/Foundation/TextIn.h"
#include "Platform/Foundation/UserDefaults.h"
#include "Platform/Views/Fonts.h"
#include "Shared/VApp.h"
#include "VellorenMenu/DelegateLog.h"
#include "VellorenMenu/EndPointHandler.h"
#include "VellorenMenu/MainViewController.h"

namespace velloren {

namespace {

constexpr double statusItemLength = 28.0;       // points
constexpr QRect menubarIconFrame(0, 0, 28, 22); // points

constexpr RunLoop::Seconds calm{2}; // a session that starts has other things to do

/// Once a bar shows the icon there may be clicks: the first is not to wait for fonts. What the popover will
/// show is in the item's menu already, where the bar asked for that.
void prepareTextsWhenShown(StatusItem& item, StatusBarButton& button) {
    button.setFirstShownHandler([&item, &button] {
        RunLoop::main().postAfter(calm, [&item, alive = QPointer(&button)] {
            if (!alive)
                return;
            QStringList titles;
            for (const StatusMenuEntry& entry : item.menu().entries())
                titles.append(QString::fromStdString(entry.title));
            fonts::prepareFor(titles);
        });
    });
}

bool isAboutMainApp(const Notification& notification) {
    if (!notification.userInfo)
        return false;
    const auto* identifier = textIn(*notification.userInfo, "NSApplicationBundleIdentifier");
    return identifier && *identifier == VApp(VApp::main).bundleIdentifier();
}

} // namespace

MenuAppDelegate::MenuAppDelegate(Link& link)
    : MainAppLink(link), statusBar(StatusBar::systemStatusBar().statusItemWithLength(statusItemLength)),
      itemMenu(statusBar->menu(), *this), menubarIcon(new MenubarIcon(menubarIconFrame)) {}

MenuAppDelegate* MenuAppDelegate::ofApplication() {
    return dynamic_cast<MenuAppDelegate*>(Application::shared().delegate());
}

MenuAppDelegate::~MenuAppDelegate() {
    if (menubarIcon)
        menubarIcon->setDelegate(nullptr);
    if (menubarIcon && !menubarIcon->parent())
        delete menubarIcon;
}

void MenuAppDelegate::applicationDidFinishLaunching() {
    Workspace& workspace = Workspace::shared();
    launches = workspace.addObserver(Workspace::Notice::DidLaunchApplication,
                                     [this](const Notification& notification) { appLaunched(notification); });
    terminations =
        workspace.addObserver(Workspace::Notice::DidTerminateApplication,
                              [this](const Notification& notification) { appTerminated(notification); });
    if (VApp(VApp::main).isRunning())
        checkIfMainAppCallerConnectionEstablishedAndRetryIfNot();
    setupListeningForIncomingMethodCalls();
    setupUI();
    setupFabric();
}

void MenuAppDelegate::setupFabric() {
    Logger::sharedInstance().info("Setting up Fabric", delegateFunction("setupFabric()"));
    UserDefaults::standardUserDefaults().registerDefaults({{"NSApplicationCrashOnExceptions", "true"}});
    Fabric::with({&Crashlytics::sharedInstance()});
}

ApplicationDelegate::TerminateReply MenuAppDelegate::applicationShouldTerminate(const std::string& sender) {
    Logger::sharedInstance().debug("applicationShouldTerminate: " + sender,
                                   delegateFunction("applicationShouldTerminate"));
    return TerminateReply::TerminateNow;
}

void MenuAppDelegate::applicationWillTerminate() {
    Logger::sharedInstance().debug("applicationWillTerminate", delegateFunction("applicationWillTerminate"));
    removeListenerEndpoint();
    if (menuAppListenerConnection) {
        menuAppListenerConnection->setInvalidationHandler(nullptr);
        menuAppListenerConnection->setInterruptionHandler(nullptr);
    }
    menuAppListenerConnection = nullptr;
}

void MenuAppDelegate::appLaunched(const Notification& notification) {
    if (!isAboutMainApp(notification))
        return;
    Logger::sharedInstance().info("Main app is launched", delegateFunction("appLaunched"));
    resetAttempts();
    checkIfMainAppCallerConnectionEstablishedAndRetryIfNot();
}

void MenuAppDelegate::appTerminated(const Notification& notification) {
    if (!isAboutMainApp(notification))
        return;
    Logger::sharedInstance().info("Main app is terminated", delegateFunction("appTerminated"));
    clearUpMainAppCallerConnection();
    itemMenu.refillSoon();
}

void MenuAppDelegate::setupListeningForIncomingMethodCalls() {
    constexpr auto function = "setupListeningForIncomingMethodCalls()";
    menuAppListener = link().anonymousListener();
    if (!menuAppListener)
        return;
    menuAppListener->setDelegate(this);
    menuAppListener->resume();
    const auto endpoint = menuAppListener->endpoint();
    if (!endpoint)
        return;

    const EndPointHandler handler(link());
    if (!handler.remoteObjectProxy)
        return;
    handler.remoteObjectProxy->registerListenerEndpoint(
        *endpoint, VApp(VApp::menu).bundleIdentifier(), [](bool stored) {
            const std::string result = stored ? "SUCCESSFUL" : "FAILED";
            Logger::sharedInstance().info("Registering menuAppListener endpoint " + result,
                                          delegateFunction(function));
        });
}

void MenuAppDelegate::removeListenerEndpoint() {
    const EndPointHandler handler(link());
    if (handler.remoteObjectProxy)
        handler.remoteObjectProxy->removeListenerEndpoint(VApp(VApp::menu).bundleIdentifier());
}

void MenuAppDelegate::displaySyncing() {
    display(MenubarIcon::State::syncing, "displaySyncing()");
}

void MenuAppDelegate::displayNotSyncing() {
    display(MenubarIcon::State::notSyncing, "displayNotSyncing()");
}

void MenuAppDelegate::display(MenubarIcon::State state, const char* function) {
    RunLoop::main().post([this, state, function] {
        Logger::sharedInstance().debug(function, delegateFunction(function));
        menubarIcon->setState(state);
        menubarIcon->applyState();
    });
}

void MenuAppDelegate::setupUI() {
    if (StatusBarButton* button = statusBar->button()) {
        menubarIcon->setParent(button);
        menubarIcon->setDelegate(this);
        prepareTextsWhenShown(*statusBar, *button);
    }
    popOver.setContentViewController(MainViewController::controller());
    popOver.setAnimates(false);
    popOver.setCloseRequestHandler([this] { closePopover(nullptr); });

    EventMask mask = 0;
    for (const EventType type : {EventType::LeftMouseDown, EventType::RightMouseDown})
        mask |= maskOf(type);
    eventMonitor.emplace(mask, [this](const Event* event) { outsideClick(event); });
}

void MenuAppDelegate::showPopover(QObject*) {
    if (const StatusBarButton* button = statusBar->button())
        popOver.showRelativeToRect(button->rect(), *button, RectEdge::MaxY);
    menubarIcon->setHighlighted(true);
    statusBar->setToolTipAllowed(false);
    itemMenu.refillSoon();
    if (eventMonitor)
        eventMonitor->start();
}

void MenuAppDelegate::closePopover(QObject*) {
    menubarIcon->setHighlighted(false);
    statusBar->setToolTipAllowed(true);
    popOver.performClose();
    if (eventMonitor)
        eventMonitor->stop();
}

void MenuAppDelegate::applicationShouldHandleReopen() {
    if (popOver.isShown()) {
        popOver.activate();
        return;
    }
    if (StatusBarButton* button = statusBar->button())
        button->forgetPress();
    showPopover(nullptr);
}

void MenuAppDelegate::didMouseDown(MenubarIcon& icon) {
    if (popOver.isShown())
        closePopover(&icon);
    else
        showPopover(&icon);
}

void MenuAppDelegate::outsideClick(const Event* event) {
    if (!popOver.isShown())
        return;
    if (!event)
        fatalError("a click outside the popover came without its event");
    closePopover(nullptr);
}

void closePopover(QWidget& view) {
    if (auto* delegate = MenuAppDelegate::ofApplication())
        delegate->closePopover(&view);
}

} // namespace velloren
