#pragma once

#include "Companions/RegistryDaemon/Registry.h"

struct sd_bus;

namespace velloren {

/// The processes on a bus. Asks the bus daemon at each question, and believes nobody else.
class BusProcesses final : public Processes {
  public:
    /// `bus` outlives the object. A question is for the call that the bus serves at that moment.
    explicit BusProcesses(sd_bus* bus);

    [[nodiscard]] std::vector<pid_t> instancesOf(const std::string& identifier) override;
    [[nodiscard]] std::optional<pid_t> caller() override;

  private:
    [[nodiscard]] std::optional<pid_t> processOf(const char* name) const;

    sd_bus* bus;
};

} // namespace velloren
