#include "Platform/Foundation/PrivateFiles.h"

#include "Platform/Foundation/UniqueDescriptor.h"

#include <fcntl.h>
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

bool createPrivateFile(const std::filesystem::path& file) {
    constexpr mode_t ownerAlone = S_IRUSR | S_IWUSR;
    const UniqueDescriptor descriptor(
        ::open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, ownerAlone));

    struct stat status {};

    const bool regular = descriptor && ::fstat(descriptor.get(), &status) == 0 && S_ISREG(status.st_mode);
    if (regular)
        ::fchmod(descriptor.get(), ownerAlone);
    return regular;
}

} // namespace velloren
