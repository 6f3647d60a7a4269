#pragma once

#include "Platform/Foundation/SharedInstance.h"

namespace velloren {

/// The product's synchronisation state. Main thread only.
class SyncManager {
  public:
    SyncManager() = default;
    SyncManager(const SyncManager&) = delete;
    SyncManager& operator=(const SyncManager&) = delete;
    virtual ~SyncManager() = default;

    /// The process-wide instance, made on first use by the maker in SharedInstance<SyncManager>.
    static SyncManager& sharedInstance() { return SharedInstance<SyncManager>::get(); }

    /// Whether the product uploads meeting files at this moment.
    [[nodiscard]] virtual bool isSyncing() = 0;
};

} // namespace velloren
