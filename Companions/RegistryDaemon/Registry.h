#pragma once

#include "Shared/EndPointHandling.h"

#include <map>
#include <string>

namespace velloren {

/// Which process listens where, for as long as the daemon runs. Answers at once, on the calling thread.
class Registry final : public EndPointHandling {
  public:
    static constexpr std::size_t mostEntries = 64;
    static constexpr std::size_t longestIdentifier = 255;

    /// A second registration under an identifier replaces the first. Refused when the identifier is empty or
    /// too long, or when there are too many already.
    void registerListenerEndpoint(const Endpoint& endpoint, const std::string& identifier,
                                  Stored completionHandler) override;

    /// An endpoint at which nobody listens any more is forgotten: its process has crashed.
    void retrieveListenerEndpoint(const std::string& identifier, Retrieved completionHandler) override;

    void removeListenerEndpoint(const std::string& identifier) override;

  private:
    std::map<std::string, Endpoint> endpoints;
};

} // namespace velloren
