#pragma once

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/types.h>

namespace velloren {

/// The sum of the numbers that stand after `key` in a file of /proc.
[[nodiscard]] inline long sumInFile(const std::filesystem::path& file, const std::string& key) {
    std::ifstream lines(file);
    long sum = 0;
    for (std::string word; lines >> word;) {
        long number = 0;
        if (word == key && lines >> number)
            sum += number;
    }
    return sum;
}

/// The memory that the process shares with nobody, in KiB.
[[nodiscard]] inline long privateMemoryOf(pid_t process) {
    const std::string file = "/proc/" + std::to_string(process) + "/smaps_rollup";
    return sumInFile(file, "Private_Clean:") + sumInFile(file, "Private_Dirty:");
}

/// The part of it that the process has written to. What it only reads of its libraries becomes its own as
/// well when other programs that use them end.
[[nodiscard]] inline long writtenMemoryOf(pid_t process) {
    return sumInFile("/proc/" + std::to_string(process) + "/smaps_rollup", "Private_Dirty:");
}

/// How many files, sockets and the like the process has open.
[[nodiscard]] inline std::ptrdiff_t descriptorsOf(pid_t process) {
    const std::filesystem::directory_iterator open("/proc/" + std::to_string(process) + "/fd");
    return std::distance(begin(open), end(open));
}

} // namespace velloren
