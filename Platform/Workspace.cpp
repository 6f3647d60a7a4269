#include "Platform/Workspace.h"

#include "Platform/SharedInstance.h"

namespace velloren {

Workspace& Workspace::shared() {
    return SharedInstance<Workspace>::get();
}

} // namespace velloren
