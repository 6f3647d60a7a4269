#include "Tests/Support/ProcessFigures.h"

#include <filesystem>
#include <fstream>

namespace velloren {

namespace {

/// The sum of the numbers that stand after `key` in a file of /proc.
long sumOf(const std::string& key, const std::filesystem::path& file) {
    std::ifstream lines(file);
    long sum = 0;
    for (std::string word; lines >> word;) {
        long number = 0;
        if (word == key && lines >> number)
            sum += number;
    }
    return sum;
}

} // namespace

long privateMemoryOf(pid_t process) {
    const std::string file = "/proc/" + std::to_string(process) + "/smaps_rollup";
    return sumOf("Private_Clean:", file) + sumOf("Private_Dirty:", file);
}

std::ptrdiff_t descriptorsOf(pid_t process) {
    const std::filesystem::directory_iterator open("/proc/" + std::to_string(process) + "/fd");
    return std::distance(begin(open), end(open));
}

VoluntarySwitches voluntarySwitchesOf(pid_t process) {
    VoluntarySwitches switches;
    for (const auto& thread :
         std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task"))
        switches[thread.path().filename()] = sumOf("voluntary_ctxt_switches:", thread.path() / "status");
    return switches;
}

long wakeUpsBetween(const VoluntarySwitches& before, const VoluntarySwitches& after) {
    long count = 0;
    for (const auto& [thread, switches] : before)
        count += after.contains(thread) ? after.at(thread) - switches : 1;
    for (const auto& [thread, switches] : after)
        count += before.contains(thread) ? 0 : switches;
    return count;
}

} // namespace velloren
