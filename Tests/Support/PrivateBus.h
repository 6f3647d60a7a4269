#pragma once

#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/Process.h"
#include "Tests/Support/TemporaryDirectory.h"

#include <memory>
#include <optional>
#include <string>

namespace velloren {

/// A session bus of the test's own, which is this process's session bus for as long as it lives.
class PrivateBus {
  public:
    PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;
    ~PrivateBus();

    [[nodiscard]] const std::string& address() const { return busAddress; }

    [[nodiscard]] const std::filesystem::path& folder() const { return temporary.path(); }

    /// From now on the bus starts `commandLine` when the name is asked for.
    void addService(const std::string& name, const std::string& commandLine);

    /// What another process that makes this call prints of the answer; none where it fails.
    std::optional<std::string> call(const std::string& service, const std::string& path,
                                    const std::string& method,
                                    const std::vector<std::string>& arguments = {}) const;

    /// Whether somebody has that name.
    [[nodiscard]] bool hasOwner(const std::string& name) const;

    /// From now on the bus answers nobody.
    void hang() const;

    /// The bus goes, as at the end of a session.
    void stop();

  private:
    std::optional<std::string> callDaemon(const std::string& method,
                                          const std::vector<std::string>& arguments = {}) const;

    TemporaryDirectory temporary;
    std::string busAddress;
    std::unique_ptr<Process> daemon;
    std::optional<EnvironmentVariable> exported;
};

} // namespace velloren
