#include "Platform/Foundation/RunLoop.h"

#include "Platform/Foundation/SharedInstance.h"

namespace velloren {

RunLoop& RunLoop::main() {
    return SharedInstance<RunLoop>::get();
}

RunLoop::Moment RunLoop::now() const {
    return std::chrono::floor<Moment::duration>(std::chrono::system_clock::now());
}

} // namespace velloren
