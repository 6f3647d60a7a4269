#pragma once

#include "Services/VSyncManager.h"

namespace velloren {

/// The product uploads while some process holds a write lock on the uploading file (see UploadingLock), so
/// that the end of that process, however it comes, ends the uploading.
class LocalSyncManager final : public SyncManager {
  public:
    [[nodiscard]] bool isSyncing() override;
};

} // namespace velloren
