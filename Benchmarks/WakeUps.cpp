#include "Benchmarks/WakeUps.h"

#include "Tests/Support/ProcessFigures.h"

#include <filesystem>

namespace velloren {

VoluntarySwitches voluntarySwitchesOf(pid_t process) {
    VoluntarySwitches switches;
    for (const auto& thread :
         std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task"))
        switches[thread.path().filename()] = sumInFile(thread.path() / "status", "voluntary_ctxt_switches:");
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
