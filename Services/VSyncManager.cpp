#include "Services/VSyncManager.h"

#include "Platform/SharedInstance.h"

namespace velloren {

SyncManager& SyncManager::sharedInstance() {
    return SharedInstance<SyncManager>::get();
}

} // namespace velloren
