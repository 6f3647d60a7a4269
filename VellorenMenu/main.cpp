#include "CrashReporting/LocalCrashlytics.h"
#include "Platform/Desktop/Application.h"
#include "Platform/Desktop/QtApplication.h"
#include "Platform/Foundation/Bundle.h"
#include "Platform/Foundation/Directories.h"
#include "Platform/Foundation/Memory.h"
#include "Platform/Foundation/QtRunLoop.h"
#include "Platform/Foundation/SharedInstance.h"
#include "Platform/Foundation/StandardError.h"
#include "Platform/Foundation/UserDefaults.h"
#include "Platform/Freedesktop/Backends/DisplayLoss.h"
#include "Platform/Freedesktop/Backends/SessionBackends.h"
#include "Platform/Freedesktop/Session/BusLoss.h"
#include "Platform/Freedesktop/Session/DesktopSettings.h"
#include "Platform/Freedesktop/Session/SessionLock.h"
#include "Platform/Freedesktop/Session/SingleInstance.h"
#include "Platform/Freedesktop/Session/TerminationSignals.h"
#include "Platform/Link/DBus/DBusLink.h"
#include "Platform/Views/Accessibility.h"
#include "Services/Local/LocalLogger.h"
#include "Services/Local/LocalMeetingStore.h"
#include "Services/Local/LocalSyncManager.h"
#include "Services/Local/LocalUserManager.h"
#include "Shared/VApp.h"
#include "VellorenMenu/MenuAppDelegate.h"

#include <QDBusConnection>
#include <QPointer>
#include <QTranslator>

#include <csignal>
#include <cstdlib>
#include <optional>
#include <string>

using namespace velloren;

namespace {

/// The services of this process that the product's files give; they go in the reverse order.
class ProcessServices {
  public:
    ProcessServices() {
        SharedInstance<RunLoop>::provide([] { return std::make_unique<QtRunLoop>(); });
        SharedInstance<Logger>::provide(
            [] { return std::make_unique<LocalLogger>("menu.log", LocalCrashlytics::recordLine); });
        SharedInstance<Crashlytics>::provide([] { return LocalCrashlytics::ofThisUser(); });
        SharedInstance<MeetingStore>::provide([] { return LocalMeetingStore::ofThisUser(); });
        SharedInstance<SyncManager>::provide([] { return std::make_unique<LocalSyncManager>(); });
        SharedInstance<UserManager>::provide([] { return LocalUserManager::ofThisUser(); });
        SharedInstance<Bundle>::provide([] { return Bundle::inFolder(":/bundle"); });
        SharedInstance<UserDefaults>::provide([] { return std::make_unique<UserDefaults>(defaultsFile()); });
    }

    ProcessServices(const ProcessServices&) = delete;
    ProcessServices& operator=(const ProcessServices&) = delete;

    ~ProcessServices() {
        SharedInstance<UserDefaults>::reset();
        SharedInstance<Bundle>::reset();
        SharedInstance<UserManager>::reset();
        SharedInstance<SyncManager>::reset();
        SharedInstance<MeetingStore>::reset();
        SharedInstance<Crashlytics>::reset();
        SharedInstance<Logger>::reset();
        SharedInstance<RunLoop>::reset();
    }

  private:
    static std::filesystem::path defaultsFile() {
        const auto folder = directories::configuration();
        return folder ? *folder / (VApp(VApp::menu).bundleIdentifier() + ".ini") : std::filesystem::path();
    }
};

/// Once the bar has asked for what it shows and was looked at for the last time: starting takes more memory
/// than running.
void giveBackMemoryOnceStarted() {
    RunLoop::main().postAfter(RunLoop::Seconds(4), giveBackUnusedMemory);
}

/// A session that has just started is not locked, and has other things to do.
void followLock(SessionLock& lock, const QDBusConnection& bus) {
    RunLoop::main().postAfter(RunLoop::Seconds(2), [&lock, bus, alive = QPointer(&lock)] {
        if (alive)
            lock.follow(bus, QDBusConnection::systemBus());
    });
}

int fail(const char* reason) {
    writeToStandardError(std::string("velloren-menu: ") + reason + "\n");
    return EXIT_FAILURE;
}

/// Whether the environment says that the session starts this program. What is started from here is not to
/// take that for its own. Before there are threads.
bool takeMarkOfSession() {
    bool marked = false;
    for (const char* mark : {"VELLOREN_AUTOSTART", "DESKTOP_AUTOSTART_ID"}) {
        marked = marked || qEnvironmentVariableIsSet(mark);
        qunsetenv(mark);
    }
    return marked;
}

int runAgent(TerminationSignals& signals, SessionDisplay display, StartedBy startedBy) {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    Application application;
    const ProcessServices services;
    const DisplayLoss displayLoss([] {
        Logger::sharedInstance().error("The display went away", {"VellorenMenu/main", "runAgent"});
    });
    const std::string identifier = VApp(VApp::menu).bundleIdentifier();
    const SessionBackends backends(
        display, bus, {identifier, "Velloren", {VApp(VApp::main).bundleIdentifier(), identifier}});
    const BusLoss busLoss(bus, [&] { // nothing the agent is for works without it
        signals.deliver();           // the end of a session sends one as well, and both may be here
        if (!application.isTerminating())
            QCoreApplication::exit(fail("the session bus went away"));
    });
    SessionLock lock;
    SingleInstance instance(bus, identifier, [&](StartedBy by) {
        signals.deliver(); // one may have been sent before this call
        if (by == StartedBy::User && !application.isTerminating())
            lock.whenUnlocked([&application] { application.reopen(); });
        return !application.isTerminating();
    });
    switch (instance.start(startedBy)) {
    case SingleInstance::Outcome::Stays:
        break;
    case SingleInstance::Outcome::FirstActivated:
        return EXIT_SUCCESS;
    case SingleInstance::Outcome::FirstSilent:
        return fail("another one is running and does not answer");
    case SingleInstance::Outcome::Refused:
        return fail("the session bus does not let this program have its name");
    }

    DBusLink link;
    MenuAppDelegate delegate(link);
    application.setDelegate(&delegate);
    signals.setHandler([&application](const std::string& sender) { application.terminate(sender); });
    const DesktopSettings settings(bus, [&delegate] { delegate.icon().setNeedsDisplay(); });
    lock.setLockedHandler([&delegate] { delegate.closePopover(nullptr); });
    followLock(lock, bus);
    giveBackMemoryOnceStarted();
    return application.run();
}

} // namespace

int main(int argc, char** argv) {
    openMissingStandardStreams();
    keepLittleMemory();
    TerminationSignals signals;
    std::signal(SIGPIPE, SIG_IGN); // nobody may read standard error any more
    neverWaitForStandardError();
    const bool marked = takeMarkOfSession();
    QCoreApplication::setApplicationName(QStringLiteral("velloren-menu"));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Velloren"));
    auto display = displayOfSession();
    if (!display)
        return fail("there is no display to show anything on");
    std::optional<DisplayChoice> choice(*display);
    const QtApplication qtApplication(argc, argv);
    display = choice->made();
    choice.reset();
    if (!QDBusConnection::sessionBus().isConnected())
        return fail("there is no session bus; start this program from a desktop session");
    QTranslator translator;
    // The first language alone: the next one down the user's list is worse than English beside English.
    const QLocale language(QLocale().uiLanguages().value(0));
    if (translator.load(language, QStringLiteral("velloren"), QStringLiteral("_"), QStringLiteral(":/i18n")))
        QCoreApplication::installTranslator(&translator);
    describeWidgetsToAssistivePrograms();
    QApplication::setQuitOnLastWindowClosed(false);
    QGuiApplication::setDesktopFileName(QString::fromStdString(VApp(VApp::menu).bundleIdentifier()));
    const bool bySession = marked || qtApplication.isSessionRestored();
    return runAgent(signals, *display, bySession ? StartedBy::Session : StartedBy::User);
}
