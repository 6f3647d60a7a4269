#pragma once

#include <map>
#include <string>
#include <sys/types.h>

namespace velloren {

/// How often each of the process's threads has gone to sleep of its own accord, by thread.
using VoluntarySwitches = std::map<std::string, long>;
[[nodiscard]] VoluntarySwitches voluntarySwitchesOf(pid_t process);

/// How often something woke a thread between the two. A thread that ended had to wake for it.
[[nodiscard]] long wakeUpsBetween(const VoluntarySwitches& before, const VoluntarySwitches& after);

} // namespace velloren
