#include "VellorenMenu/EndPointHandler.h"

#include "Platform/Foundation/FatalError.h"
#include "Shared/VApp.h"

namespace velloren {

EndPointHandler::EndPointHandler(Link& link, WithoutBus withoutBus)
    : serviceName(VApp(VApp::agent).bundleIdentifier()),
      agentConnection(link.connectionToService(serviceName)) {
    if (!agentConnection && withoutBus == WithoutBus::HasNoProxy)
        return;
    if (!agentConnection)
        fatalError("the connection to " + serviceName + " could not be created");
    agentConnection->setRemoteObjectInterface(endPointHandlingInterface());
    agentConnection->resume();
    remoteObjectProxy = std::dynamic_pointer_cast<EndPointHandling>(agentConnection->remoteObjectProxy());
}

std::string EndPointHandler::description() const {
    return "<EndPointHandler: " + serviceName + ">";
}

} // namespace velloren
