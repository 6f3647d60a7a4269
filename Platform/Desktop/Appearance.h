#pragma once

#include <optional>
#include <string>

namespace velloren {

/// How the bar that holds the status items looks. Main thread only.
class Appearance {
  public:
    static const std::string vibrantDark;
    static const std::string vibrantLight;

    /// One of the two names above: what the desktop said last, else what the palette suggests.
    [[nodiscard]] static const std::string& currentName();

    /// What the desktop says, kept until it says otherwise; none leaves it to the palette.
    static void setCurrentName(std::optional<std::string> name);
};

} // namespace velloren
