#include "Companions/RegistryDaemon/Registry.h"

#include "Platform/Freedesktop/Bus/LocalSocket.h"

namespace velloren {

void Registry::registerListenerEndpoint(const Endpoint& endpoint, const std::string& identifier,
                                        Stored completionHandler) {
    const bool fits = !identifier.empty() && identifier.size() <= longestIdentifier &&
                      (endpoints.size() < mostEntries || endpoints.contains(identifier));
    if (fits)
        endpoints.insert_or_assign(identifier, endpoint);
    completionHandler(fits);
}

void Registry::retrieveListenerEndpoint(const std::string& identifier, Retrieved completionHandler) {
    const auto found = endpoints.find(identifier);
    if (found == endpoints.end()) {
        completionHandler(std::nullopt);
        return;
    }
    if (!isListening(found->second)) {
        endpoints.erase(found);
        completionHandler(std::nullopt);
        return;
    }
    completionHandler(found->second);
}

void Registry::removeListenerEndpoint(const std::string& identifier) {
    endpoints.erase(identifier);
}

} // namespace velloren
