#pragma once

#include "Platform/Link/Link.h"
#include "Shared/EndPointHandling.h"

#include <memory>
#include <string>

namespace velloren {

/// One short-lived connection to the registry of listener endpoints, for one call: whoever makes a handler
/// keeps it until that call is sent or, where its reply matters, until the reply is there. Main thread only.
class EndPointHandler {
  public:
    explicit EndPointHandler(Link& link);

    std::string serviceName;
    std::shared_ptr<Connection> agentConnection;
    /// None when the registry's proxy is not an `EndPointHandling`.
    std::shared_ptr<EndPointHandling> remoteObjectProxy;

    /// A printed form for log lines.
    [[nodiscard]] std::string description() const;
};

} // namespace velloren
