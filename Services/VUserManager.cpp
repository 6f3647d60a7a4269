#include "Services/VUserManager.h"

#include "Platform/SharedInstance.h"

namespace velloren {

UserManager& UserManager::sharedInstance() {
    return SharedInstance<UserManager>::get();
}

} // namespace velloren
