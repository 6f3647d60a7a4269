#pragma once

#include "Platform/Link/Link.h"
#include "Shared/EndPointHandling.h"

#include <memory>
#include <string>

namespace velloren {

/// One short-lived connection to the registry of listener endpoints, for one call: whoever makes a handler
/// keeps it until that call is sent or, where its reply matters, until the reply is there. Made on the main
/// thread; the last owner may release it on any.
class EndPointHandler {
  public:
    enum class WithoutBus { StopsProcess, HasNoProxy };

    explicit EndPointHandler(Link& link, WithoutBus withoutBus = WithoutBus::StopsProcess);

    std::string serviceName;
    std::unique_ptr<Connection> agentConnection; ///< none without a bus
    /// None when the registry's proxy is not an `EndPointHandling`, and without a bus.
    std::shared_ptr<EndPointHandling> remoteObjectProxy;

    /// A printed form for log lines.
    [[nodiscard]] std::string description() const;
};

} // namespace velloren
