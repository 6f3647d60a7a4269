#include "Platform/RunLoop.h"

#include "Platform/SharedInstance.h"

namespace velloren {

RunLoop& RunLoop::main() {
    return SharedInstance<RunLoop>::get();
}

} // namespace velloren
