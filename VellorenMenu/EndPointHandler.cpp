#include "VellorenMenu/EndPointHandler.h"

#include "Shared/VApp.h"

namespace velloren {

EndPointHandler::EndPointHandler(Link& link)
    : serviceName(VApp(VApp::agent).bundleIdentifier()),
      agentConnection(link.connectionToService(serviceName)) {
    agentConnection->setRemoteObjectInterface(endPointHandlingInterface());
    agentConnection->resume();
    remoteObjectProxy = std::dynamic_pointer_cast<EndPointHandling>(agentConnection->remoteObjectProxy());
}

std::string EndPointHandler::description() const {
    return "<EndPointHandler: " + serviceName + ">";
}

} // namespace velloren
