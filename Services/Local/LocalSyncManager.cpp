#include "Services/Local/LocalSyncManager.h"

#include "Services/Local/UploadingLock.h"

#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace velloren {

LocalSyncManager::LocalSyncManager(std::filesystem::path file) : file(std::move(file)) {}

std::unique_ptr<LocalSyncManager> LocalSyncManager::ofThisUser() {
    return std::make_unique<LocalSyncManager>(UploadingLock::usualPath());
}

bool LocalSyncManager::isSyncing() {
    const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY);
    if (descriptor < 0)
        return false;

    // Only a write lock stands in the way of a read lock.
    struct flock lock {};

    lock.l_type = F_RDLCK;
    lock.l_whence = SEEK_SET;
    const bool answered = ::fcntl(descriptor, F_OFD_GETLK, &lock) == 0;
    ::close(descriptor);
    return answered && lock.l_type == F_WRLCK;
}

} // namespace velloren
