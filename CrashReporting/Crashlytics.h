#pragma once

#include "CrashReporting/Fabric.h"
#include "Platform/Foundation/SharedInstance.h"

namespace velloren {

/// Reports the crashes of this process. Main thread only.
class Crashlytics : public Kit {
  public:
    /// The one of this process, provided through SharedInstance<Crashlytics>.
    static Crashlytics& sharedInstance() { return SharedInstance<Crashlytics>::get(); }
};

} // namespace velloren
