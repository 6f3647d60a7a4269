#include "CrashReporting/CrashFolder.h"

#include <algorithm>
#include <system_error>
#include <vector>

namespace velloren {

namespace {

constexpr std::size_t keptReports = 10;

}

void keepNewestReports(const std::filesystem::path& folder) {
    std::error_code error;
    std::vector<std::filesystem::path> reports;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry->path().extension() == ".txt" && entry->is_regular_file(error))
            reports.push_back(entry->path());
    }
    std::sort(reports.begin(), reports.end()); // a report's name begins with its time
    while (reports.size() > keptReports) {
        std::filesystem::remove(reports.front(), error);
        reports.erase(reports.begin());
    }
}

} // namespace velloren
