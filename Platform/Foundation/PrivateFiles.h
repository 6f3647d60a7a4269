#pragma once

#include <filesystem>

namespace velloren {

/// Creates `folder` for its owner alone, whatever the umask, and the folders above it where they are missing;
/// one that is there becomes its owner's alone. Answers whether the folder is there now.
[[nodiscard]] bool createPrivateFolder(const std::filesystem::path& folder);

} // namespace velloren
