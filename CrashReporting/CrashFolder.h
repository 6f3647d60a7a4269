#pragma once

#include <filesystem>

namespace velloren {

/// Removes all reports but the newest ten. Other files in the folder are left alone; an error is, too.
void keepNewestReports(const std::filesystem::path& folder);

} // namespace velloren
