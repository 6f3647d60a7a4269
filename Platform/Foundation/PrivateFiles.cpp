#include "Platform/Foundation/PrivateFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

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
    const int descriptor =
        ::open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, ownerAlone);
    if (descriptor < 0)
        return false;

    struct stat status {};

    const bool regular = ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    if (regular)
        ::fchmod(descriptor, ownerAlone);
    ::close(descriptor);
    return regular;
}

} // namespace velloren
