#include "CrashReporting/LocalCrashlytics.h"

#include "CrashReporting/CrashHandler.h"
#include "CrashReporting/RecentLines.h"
#include "Platform/Desktop/QtApplication.h"
#include "Platform/Foundation/BundleVersions.h"
#include "Platform/Foundation/Directories.h"
#include "Platform/Foundation/PrivateFiles.h"
#include "Platform/Foundation/UserDefaults.h"
#include "Services/VLogger.h"

#include <algorithm>
#include <system_error>
#include <vector>

namespace velloren {

namespace {

constexpr std::size_t keptReports = 10;

void keepNewestReports(const std::filesystem::path& folder) {
    std::error_code error;
    std::vector<std::filesystem::path> reports;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry->path().extension() == ".txt" && entry->is_regular_file(error))
            reports.push_back(entry->path());
    }
    std::sort(reports.begin(), reports.end()); // a report's name begins with its time
    for (std::size_t index = 0; index + keptReports < reports.size(); ++index)
        std::filesystem::remove(reports[index], error);
}

} // namespace

LocalCrashlytics::LocalCrashlytics(std::optional<std::filesystem::path> folder,
                                   const std::optional<std::string>& version)
    : folder(std::move(folder)), version(version.value_or("unknown version")) {}

std::unique_ptr<LocalCrashlytics> LocalCrashlytics::ofThisUser() {
    const auto state = directories::state();
    return std::make_unique<LocalCrashlytics>(state ? std::optional(*state / "crashes") : std::nullopt,
                                              appVersion(Bundle::mainBundle()));
}

void LocalCrashlytics::start() {
    if (folder && createPrivateFolder(*folder))
        keepNewestReports(*folder);
    installCrashHandler(folder ? folder->string() : std::string(), version);
    if (UserDefaults::standardUserDefaults().boolForKey("NSApplicationCrashOnExceptions") == false)
        QtApplication::setExceptionHandler([](const std::string& exception) {
            Logger::sharedInstance().error("Uncaught exception: " + exception,
                                           {"CrashReporting/LocalCrashlytics", "start()"});
        });
}

void LocalCrashlytics::recordLine(std::string_view line) {
    recentLines.append(line);
}

} // namespace velloren
