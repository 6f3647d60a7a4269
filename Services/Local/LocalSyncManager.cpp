#include "Services/Local/LocalSyncManager.h"

#include "Platform/Foundation/UniqueDescriptor.h"
#include "Services/Local/UploadingLock.h"

#include <fcntl.h>

namespace velloren {

bool LocalSyncManager::isSyncing() {
    const UniqueDescriptor descriptor(
        ::open(UploadingLock::usualPath().c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));

    // Only a write lock stands in the way of a read lock.
    struct flock lock {};

    lock.l_type = F_RDLCK;
    lock.l_whence = SEEK_SET;
    return descriptor && ::fcntl(descriptor.get(), F_OFD_GETLK, &lock) == 0 && lock.l_type == F_WRLCK;
}

} // namespace velloren
