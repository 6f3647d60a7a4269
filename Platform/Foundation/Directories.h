#pragma once

#include <filesystem>
#include <optional>

/// The product's folders, from the XDG base directories of the environment. Nothing is created. Absence means
/// that the environment names no such place (neither the variable, as an absolute path, nor a home).
namespace velloren::directories {

/// `$XDG_DATA_HOME/velloren`
[[nodiscard]] std::optional<std::filesystem::path> data();
/// `$XDG_CONFIG_HOME/velloren`
[[nodiscard]] std::optional<std::filesystem::path> configuration();
/// `$XDG_STATE_HOME/velloren`
[[nodiscard]] std::optional<std::filesystem::path> state();
/// `$XDG_RUNTIME_DIR/velloren`; has no fallback
[[nodiscard]] std::optional<std::filesystem::path> runtime();

} // namespace velloren::directories
