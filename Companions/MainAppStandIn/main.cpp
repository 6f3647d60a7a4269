#include "Companions/MainAppStandIn/DemonstrationStore.h"
#include "Companions/MainAppStandIn/MainWindow.h"
#include "Companions/MainAppStandIn/MeetingDatabase.h"
#include "Companions/MainAppStandIn/MeetingService.h"
#include "Companions/MainAppStandIn/Registration.h"
#include "Companions/MainAppStandIn/RequestLog.h"
#include "Platform/Foundation/QtRunLoop.h"
#include "Platform/Foundation/SharedInstance.h"
#include "Platform/Freedesktop/Session/BusLoss.h"
#include "Platform/Freedesktop/Session/SingleInstance.h"
#include "Platform/Freedesktop/Session/TerminationSignals.h"
#include "Platform/Link/DBus/DBusLink.h"
#include "Services/Local/LocalMeetingStore.h"
#include "Shared/VApp.h"

#include <QApplication>
#include <QCommandLineParser>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <span>
#include <string_view>

using namespace velloren;

namespace {

struct Options {
    bool window = true;
    bool makesStore = false;
    bool registers = true;
    double registersAfter = 0; // seconds
    std::string requestLog;
};

Options optionsOf(const QCoreApplication& application) {
    const QCommandLineOption noWindow("no-window", "Run without a display.");
    const QCommandLineOption store("make-demonstration-store", "Fill the store, log a user in, and exit.");
    const QCommandLineOption never("never-register", "Do not register with the registry.");
    const QCommandLineOption after("register-after", "Register that many seconds after the start.", "seconds",
                                   "0");
    const QCommandLineOption log("log-requests", "Write a line per request to the file.", "file");
    QCommandLineParser parser;
    parser.setApplicationDescription("Stands in for the Velloren main app.");
    parser.addHelpOption();
    parser.addOptions({noWindow, store, never, after, log});
    parser.process(application);
    return {!parser.isSet(noWindow), parser.isSet(store), !parser.isSet(never),
            parser.value(after).toDouble(), parser.value(log).toStdString()};
}

int fail(const char* reason) {
    std::fprintf(stderr, "velloren-main: %s\n", reason);
    return EXIT_FAILURE;
}

int run(const Options& options, TerminationSignals& signals) {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!announceRunning(bus, VApp(VApp::main).bundleIdentifier()))
        return fail("there is no session bus to run on");
    const BusLoss busLoss(bus, [] { QCoreApplication::exit(fail("the session bus went away")); });
    MeetingDatabase database(MeetingDatabase::usualPath());
    const auto store = LocalMeetingStore::ofThisUser();
    RequestLog log(options.requestLog);
    MeetingService service(log, *store);

    DBusLink link;
    const auto listener = link.anonymousListener();
    listener->setDelegate(&service);
    listener->resume();
    const auto endpoint = listener->endpoint();
    if (!endpoint)
        return fail("there is no private runtime directory to listen in");
    Registration registration(link, bus, *endpoint);
    if (options.registers)
        RunLoop::main().postAfter(RunLoop::Seconds(options.registersAfter), [&] { registration.start(); });

    std::unique_ptr<MainWindow> window;
    if (options.window) {
        window = std::make_unique<MainWindow>(log, database);
        window->show();
    }
    signals.setHandler([](const std::string&) { QCoreApplication::exit(EXIT_SUCCESS); });
    return QCoreApplication::exec();
}

std::unique_ptr<QCoreApplication> makeApplication(int& count, char** arguments) {
    const auto all = std::span(arguments, std::size_t(count)).subspan(1);
    const bool needsNoDisplay = std::any_of(all.begin(), all.end(), [](std::string_view argument) {
        return argument == "--no-window" || argument == "--make-demonstration-store" ||
               argument == "--help" || argument == "-h";
    });
    if (needsNoDisplay)
        return std::make_unique<QCoreApplication>(count, arguments);
    return std::make_unique<QApplication>(count, arguments);
}

} // namespace

int main(int argc, char** argv) {
    TerminationSignals signals;
    const auto application = makeApplication(argc, argv);
    const Options options = optionsOf(*application);
    SharedInstance<RunLoop>::provide([] { return std::make_unique<QtRunLoop>(); });
    int status = EXIT_SUCCESS;
    try {
        if (options.makesStore)
            makeDemonstrationStore();
        else
            status = run(options, signals);
    } catch (const std::exception& trouble) {
        std::fprintf(stderr, "velloren-main: the meeting store cannot be used: %s\n", trouble.what());
        status = EXIT_FAILURE;
    }
    SharedInstance<RunLoop>::reset();
    return status;
}
