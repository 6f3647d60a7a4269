#pragma once

#include "Platform/Link/Link.h"

#include <functional>
#include <optional>
#include <string>

namespace velloren {

/// The registry of listener endpoints, served by the background agent under its bundle identifier. The calls
/// return at once; what comes back comes later.
class EndPointHandling {
  public:
    using Stored = std::function<void(bool stored)>;
    using Retrieved = std::function<void(std::optional<Endpoint> endpoint)>;

    EndPointHandling() = default;
    EndPointHandling(const EndPointHandling&) = delete;
    EndPointHandling& operator=(const EndPointHandling&) = delete;
    virtual ~EndPointHandling() = default;

    /// `completionHandler` runs once when the registry answers: whether it stored the endpoint.
    virtual void registerListenerEndpoint(const Endpoint& endpoint, const std::string& identifier,
                                          Stored completionHandler) = 0;

    /// `completionHandler` runs once when the registry answers, with none when no endpoint is registered, or
    /// one that must not be connected to.
    virtual void retrieveListenerEndpoint(const std::string& identifier, Retrieved completionHandler) = 0;

    virtual void removeListenerEndpoint(const std::string& identifier) = 0;
};

/// The interface as a connection takes it; its proxies are `EndPointHandling` objects.
[[nodiscard]] RemoteInterface endPointHandlingInterface();

/// Serves `implementation`, which outlives the result.
[[nodiscard]] ExportedInterface exportedEndPointHandling(EndPointHandling& implementation);

} // namespace velloren
