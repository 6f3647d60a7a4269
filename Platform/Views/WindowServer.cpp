#include "Platform/Views/WindowServer.h"

#include "Platform/Foundation/SharedInstance.h"

namespace velloren {

WindowServer& WindowServer::shared() {
    return SharedInstance<WindowServer>::get();
}

} // namespace velloren
