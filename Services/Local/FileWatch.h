#pragma once

#include "Platform/Foundation/Subscription.h"

#include <filesystem>
#include <functional>
#include <string>

namespace velloren {

/// Runs `changed` on the main loop when the file was written, made, removed or replaced, also where its
/// folder comes later, and when its neighbour of the name `companion` was written, until the result ends;
/// some four times a second at most, however much is written. An empty path stands for a file that is never
/// there. Nothing is noticed where the system has no descriptor left, or does not know: on file systems of
/// other machines, or behind symbolic links. Main thread only.
Subscription watchFile(const std::filesystem::path& file, const std::string& companion,
                       std::function<void()> changed);

} // namespace velloren
