#pragma once

#include <string>

namespace velloren {

/// From now on a fatal signal of this process leaves a report in `folder` before its default action happens.
/// An empty folder keeps no reports. Main thread only, once.
void installCrashHandler(const std::string& folder, const std::string& version);

} // namespace velloren
