#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <sys/types.h>

namespace velloren {

/// The sum of the numbers that stand after `key` in a file of /proc.
[[nodiscard]] long sumInFile(const std::filesystem::path& file, const std::string& key);

/// The memory that the process shares with nobody, in KiB.
[[nodiscard]] long privateMemoryOf(pid_t process);

/// How many files, sockets and the like the process has open.
[[nodiscard]] std::ptrdiff_t descriptorsOf(pid_t process);

} // namespace velloren
