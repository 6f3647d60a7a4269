#include "CrashReporting/Fabric.h"

namespace velloren {

void Fabric::with(const std::vector<Kit*>& kits) {
    for (Kit* kit : kits)
        kit->start();
}

} // namespace velloren
