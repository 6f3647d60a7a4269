#include "Services/Local/UploadingLock.h"

#include "Platform/Foundation/Directories.h"
#include "Platform/Foundation/PrivateFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace velloren {

std::filesystem::path UploadingLock::usualPath() {
    const auto folder = directories::runtime();
    return folder ? *folder / "uploading.lock" : std::filesystem::path();
}

std::unique_ptr<UploadingLock> UploadingLock::acquire(const std::filesystem::path& file) {
    if (file.empty() || !createPrivateFolder(file.parent_path()))
        return nullptr;
    const int descriptor = ::open(
        file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY, S_IRUSR | S_IWUSR);
    if (descriptor < 0)
        return nullptr;
    std::unique_ptr<UploadingLock> held(new UploadingLock(descriptor));

    struct flock lock {};

    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    if (::fcntl(descriptor, F_OFD_SETLK, &lock) != 0)
        return nullptr;
    return held;
}

UploadingLock::UploadingLock(int descriptor) : descriptor(descriptor) {}

UploadingLock::~UploadingLock() {
    ::close(descriptor);
}

} // namespace velloren
