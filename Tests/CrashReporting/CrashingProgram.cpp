// Ends in the way that its first argument names. Its crashes are reported into the folder that is its second
// argument, or nowhere; without one nothing is started. A third argument is a file of user defaults.

#include "CrashReporting/LocalCrashlytics.h"
#include "Platform/Desktop/QtApplication.h"
#include "Platform/Foundation/FatalError.h"
#include "Platform/Foundation/SharedInstance.h"
#include "Platform/Foundation/StandardError.h"
#include "Platform/Foundation/UserDefaults.h"
#include "Services/Local/LocalLogger.h"

#include <QTimer>

#include <functional>
#include <map>
#include <span>
#include <stdexcept>
#include <sys/mman.h>

using namespace velloren;

namespace {

void writeToForbiddenPage() {
    void* page = ::mmap(nullptr, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    *static_cast<volatile int*>(page) = 1;
}

void throwOne() {
    throw std::runtime_error("the notes are gone");
}

int useUpTheStack(int depth) { // NOLINT(misc-no-recursion): that is how
    volatile char page[4096];
    page[0] = char(depth);
    return depth < 0 ? page[0] : useUpTheStack(depth + 1) + page[0];
}

const std::map<std::string, std::function<void()>> ends{
    {"segv", writeToForbiddenPage},
    {"fatal-error", [] { fatalError("this cannot be", "Unit", 7); }},
    {"throw", throwOne},
    {"overflow", [] { useUpTheStack(0); }},
};

} // namespace

int main(int argc, char** argv) { // NOLINT(bugprone-exception-escape): that is one of the ends
    const std::span arguments(argv, std::size_t(argc));
    neverWaitForStandardError();
    qputenv("QT_QPA_PLATFORM", "offscreen");
    SharedInstance<Logger>::provide(
        [] { return std::make_unique<LocalLogger>("crash.log", LocalCrashlytics::recordLine); });
    SharedInstance<UserDefaults>::provide(
        [&] { return std::make_unique<UserDefaults>(arguments.size() > 3 ? arguments[3] : ""); });
    UserDefaults::standardUserDefaults().registerDefaults({{"NSApplicationCrashOnExceptions", "true"}});
    const std::string_view folder = arguments.size() > 2 ? arguments[2] : "";
    LocalCrashlytics reporter(folder == "nowhere" ? std::nullopt : std::optional(folder), "2.1 (57)");
    if (arguments.size() > 2)
        reporter.start();
    for (int line = 1; line <= 60; ++line)
        Logger::sharedInstance().info("line " + std::to_string(line) + ".", {"Crashing", "main"});

    QtApplication application(argc, argv);
    QTimer::singleShot(0, &application, [&] { ends.at(arguments[1])(); });
    QTimer::singleShot(0, &application, [] { QCoreApplication::exit(3); });
    return QCoreApplication::exec();
}
