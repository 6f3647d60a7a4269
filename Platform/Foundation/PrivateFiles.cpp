#include "Platform/Foundation/PrivateFiles.h"

#include <sys/stat.h>
#include <system_error>

namespace velloren {

bool createPrivateFolder(const std::filesystem::path& folder) {
    std::error_code error;
    const std::filesystem::path above = folder.parent_path();
    if (!above.empty() && !std::filesystem::exists(above, error) && !createPrivateFolder(above))
        return false;
    ::mkdir(folder.c_str(), S_IRWXU);
    if (!std::filesystem::is_directory(folder, error))
        return false;
    ::chmod(folder.c_str(), S_IRWXU);
    return true;
}

} // namespace velloren
