#include "CrashReporting/Crashlytics.h"

#include "Platform/Foundation/SharedInstance.h"

namespace velloren {

Crashlytics& Crashlytics::sharedInstance() {
    return SharedInstance<Crashlytics>::get();
}

} // namespace velloren
