#include "Platform/Desktop/Workspace.h"

#include "Platform/Foundation/SharedInstance.h"

namespace velloren {

Workspace& Workspace::shared() {
    return SharedInstance<Workspace>::get();
}

} // namespace velloren
