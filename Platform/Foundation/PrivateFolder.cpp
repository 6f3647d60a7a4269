#include "Platform/Foundation/PrivateFolder.h"

#include <sys/stat.h>
#include <system_error>

namespace velloren {

bool createPrivateFolder(const std::filesystem::path& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder.parent_path(), error);
    ::mkdir(folder.c_str(), S_IRWXU);
    return std::filesystem::is_directory(folder, error);
}

} // namespace velloren
