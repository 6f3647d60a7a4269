#pragma once

#include <string>

namespace velloren {

/// A printed form of the calling thread for log lines: its number in the system and its name.
[[nodiscard]] std::string currentThreadDescription();

} // namespace velloren
