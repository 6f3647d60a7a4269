#include "Platform/Foundation/RunLoop.h"

#include "Platform/Foundation/SharedInstance.h"

namespace velloren {

RunLoop& RunLoop::main() {
    return SharedInstance<RunLoop>::get();
}

} // namespace velloren
