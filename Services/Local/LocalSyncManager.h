#pragma once

#include "Services/VSyncManager.h"

#include <filesystem>
#include <memory>

namespace velloren {

/// The product uploads while some process holds a write lock on the uploading file (see UploadingLock), so
/// that the end of that process, however it comes, ends the uploading.
class LocalSyncManager final : public SyncManager {
  public:
    /// An empty path stands for a file that is never there.
    explicit LocalSyncManager(std::filesystem::path file);

    /// With the uploading file at its usual place.
    [[nodiscard]] static std::unique_ptr<LocalSyncManager> ofThisUser();

    [[nodiscard]] bool isSyncing() override;

  private:
    std::filesystem::path file;
};

} // namespace velloren
