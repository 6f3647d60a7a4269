#include "CrashReporting/RecentLines.h"

#include <algorithm>

namespace velloren {

RecentLines recentLines;

void RecentLines::append(std::string_view line) {
    Line& place = lines[appended.fetch_add(1) % capacity];
    place.length = 0; // a handler that reads meanwhile finds it empty
    const std::size_t length = std::min(line.size(), place.text.size());
    std::copy_n(line.begin(), length, place.text.begin());
    place.length = length;
}

} // namespace velloren
