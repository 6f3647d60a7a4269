#pragma once

#include <filesystem>

namespace velloren {

/// Creates `folder`, for its owner alone, and the folders above it where they are missing. Answers whether
/// the folder is there now.
[[nodiscard]] bool createPrivateFolder(const std::filesystem::path& folder);

} // namespace velloren
