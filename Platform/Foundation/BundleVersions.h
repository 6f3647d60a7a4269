#pragma once

#include "Platform/Foundation/Bundle.h"

#include <optional>
#include <string>

/// The versions that a bundle's information dictionary tells. Absence means that the dictionary or the entry
/// is missing, or that the entry is not a text.
namespace velloren {

/// The version as users know it: "2.1".
[[nodiscard]] std::optional<std::string> bundleShortVersion(const Bundle& bundle);

/// The number of the build: "57".
[[nodiscard]] std::optional<std::string> bundleVersion(const Bundle& bundle);

/// The program's own version and build, "2.1 (57)", whatever bundle is asked. None unless it has both.
[[nodiscard]] std::optional<std::string> appVersion(const Bundle& bundle);

} // namespace velloren
