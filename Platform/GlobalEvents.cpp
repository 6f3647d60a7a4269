#include "Platform/GlobalEvents.h"

#include "Platform/SharedInstance.h"

namespace velloren {

GlobalEvents& GlobalEvents::shared() {
    return SharedInstance<GlobalEvents>::get();
}

} // namespace velloren
