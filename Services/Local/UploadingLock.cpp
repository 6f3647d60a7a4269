#include "Services/Local/UploadingLock.h"

#include "Platform/Foundation/Directories.h"
#include "Platform/Foundation/PrivateFiles.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace velloren {

std::filesystem::path UploadingLock::usualPath() {
    const auto folder = directories::runtime();
    return folder ? *folder / "uploading.lock" : std::filesystem::path();
}

std::unique_ptr<UploadingLock> UploadingLock::acquire() {
    const std::filesystem::path file = usualPath();
    if (file.empty() || !createPrivateFolder(file.parent_path()))
        return nullptr;
    UniqueDescriptor descriptor(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR));

    struct flock lock {};

    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    if (!descriptor || ::fcntl(descriptor.get(), F_OFD_SETLK, &lock) != 0)
        return nullptr;
    return std::unique_ptr<UploadingLock>(new UploadingLock(std::move(descriptor)));
}

} // namespace velloren
