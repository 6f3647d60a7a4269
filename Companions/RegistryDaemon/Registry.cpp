#include "Companions/RegistryDaemon/Registry.h"

#include "Platform/Link/DBus/LocalSocket.h"

#include <algorithm>

namespace velloren {

namespace {

bool contains(const std::vector<pid_t>& instances, const std::optional<pid_t>& process) {
    return process && std::find(instances.begin(), instances.end(), *process) != instances.end();
}

bool isFirst(const std::vector<pid_t>& instances, const std::optional<pid_t>& process) {
    return process && !instances.empty() && instances.front() == *process;
}

} // namespace

Registry::Registry(Processes& processes) : processes(processes) {}

void Registry::registerListenerEndpoint(const Endpoint& endpoint, const std::string& identifier,
                                        Stored completionHandler) {
    const auto instances = processes.instancesOf(identifier);
    const auto caller = processes.caller();
    if (identifier.empty() || (!instances.empty() && !contains(instances, caller))) {
        completionHandler(false);
        return;
    }
    const bool isOwner = isFirst(instances, caller);
    const Entry entry{identifier, instances.empty() ? std::nullopt : caller, endpoint};
    entries.remove_if([&](const Entry& other) {
        return other.identifier == identifier &&
               (other.process == entry.process || (isOwner && !other.process) || instances.empty());
    });
    entries.push_back(entry);
    completionHandler(true);
}

Registry::Entries::iterator Registry::find(const std::string& identifier) {
    const auto instances = processes.instancesOf(identifier);
    const auto matches = [&](const std::optional<pid_t>& process) {
        return std::find_if(entries.begin(), entries.end(), [&](const Entry& entry) {
            return entry.identifier == identifier && (instances.empty() || entry.process == process);
        });
    };
    const auto owners = matches(instances.empty() ? std::nullopt : std::optional(instances.front()));
    return owners == entries.end() ? matches(std::nullopt) : owners;
}

void Registry::retrieveListenerEndpoint(const std::string& identifier, Retrieved completionHandler) {
    const auto found = find(identifier);
    if (found != entries.end() && isListening(found->endpoint)) {
        completionHandler(found->endpoint);
        return;
    }
    if (found != entries.end())
        entries.erase(found);
    completionHandler(std::nullopt);
}

void Registry::removeListenerEndpoint(const std::string& identifier) {
    const auto instances = processes.instancesOf(identifier);
    const auto caller = processes.caller();
    const auto isCallers = [&](const Entry& entry) {
        return entry.process ? entry.process == caller : isFirst(instances, caller);
    };
    entries.remove_if([&](const Entry& entry) {
        // A caller that has ended since is nobody that could be asked for: what it left, its socket tells.
        return entry.identifier == identifier &&
               (instances.empty() || isCallers(entry) || !isListening(entry.endpoint));
    });
}

} // namespace velloren
