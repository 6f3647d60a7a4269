#include "Services/VUserManager.h"

#include "Platform/Foundation/SharedInstance.h"

namespace velloren {

UserManager& UserManager::sharedInstance() {
    return SharedInstance<UserManager>::get();
}

} // namespace velloren
