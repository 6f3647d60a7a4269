#include "Services/VSyncManager.h"

#include "Platform/Foundation/SharedInstance.h"

namespace velloren {

SyncManager& SyncManager::sharedInstance() {
    return SharedInstance<SyncManager>::get();
}

} // namespace velloren
