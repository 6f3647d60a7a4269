#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace velloren {

/// What the product's addresses are composed of.
class URLs {
  public:
    /// The scheme of an address and what separates it from the host.
    enum class ConnectionProtocol { http, https };

    [[nodiscard]] static const std::string& rawValue(ConnectionProtocol protocol);

    /// None unless the text is exactly one of the raw values.
    [[nodiscard]] static std::optional<ConnectionProtocol> connectionProtocol(std::string_view rawValue);

    /// The front page of the product's help centre.
    [[nodiscard]] static const std::string& helpCenterAddress();
};

} // namespace velloren
