#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace velloren {

/// Where a process listens: a D-Bus server address with the transport `unix:path=` or `unix:abstract=`.
class Endpoint {
  public:
    /// Absence means that the text is not exactly one such address: another transport, a list of addresses,
    /// a bad escape, a path too long for a socket. Such an address must never be connected to.
    [[nodiscard]] static std::optional<Endpoint> parse(std::string_view address);

    /// The endpoint of a socket at an absolute file-system path.
    [[nodiscard]] static std::optional<Endpoint> ofSocketPath(std::string_view path);

    /// The address as it travels over the wire.
    [[nodiscard]] const std::string& address() const { return text; }

    /// The socket's name as connect(2) takes it: a path, or a leading NUL and an abstract name.
    [[nodiscard]] const std::string& socketName() const { return name; }

    friend bool operator==(const Endpoint&, const Endpoint&) = default;

  private:
    Endpoint(std::string text, std::string name) : text(std::move(text)), name(std::move(name)) {}

    std::string text;
    std::string name;
};

} // namespace velloren
