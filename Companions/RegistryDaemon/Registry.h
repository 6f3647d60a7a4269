#pragma once

#include "Shared/EndPointHandling.h"

#include <list>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace velloren {

/// Who has which name, as the registry needs to know it.
class Processes {
  public:
    Processes() = default;
    Processes(const Processes&) = delete;
    Processes& operator=(const Processes&) = delete;
    virtual ~Processes() = default;

    /// The processes that have the identifier as their name: first its owner, then those that wait in line.
    [[nodiscard]] virtual std::vector<pid_t> instancesOf(const std::string& identifier) = 0;

    /// The process whose call is being served; none when it has gone.
    [[nodiscard]] virtual std::optional<pid_t> caller() = 0;
};

/// Which process listens where, for as long as the daemon runs. Answers at once, on the calling thread.
///
/// While an identifier has an owner, only its instances register and remove under it, each an endpoint of its
/// own, and the owner's is the one to be had. While it has none, anybody may, until the owner registers.
class Registry final : public EndPointHandling {
  public:
    /// `processes` outlives the registry.
    explicit Registry(Processes& processes);

    /// A second registration replaces the first. Refused when the identifier is empty or the caller may not.
    void registerListenerEndpoint(const Endpoint& endpoint, const std::string& identifier,
                                  Stored completionHandler) override;

    /// An endpoint at which nobody listens any more is forgotten: its process has crashed.
    void retrieveListenerEndpoint(const std::string& identifier, Retrieved completionHandler) override;

    void removeListenerEndpoint(const std::string& identifier) override;

  private:
    struct Entry {
        std::string identifier;
        std::optional<pid_t> process; ///< none: registered while the identifier had no owner
        Endpoint endpoint;
    };

    using Entries = std::list<Entry>;

    [[nodiscard]] Entries::iterator find(const std::string& identifier);

    Processes& processes;
    Entries entries; ///< oldest first
};

} // namespace velloren
