#include "Platform/Foundation/Directories.h"

#include <cstdlib>

namespace velloren::directories {

namespace {

std::optional<std::filesystem::path> absolutePathIn(const char* variable) {
    const char* value = std::getenv(variable);
    if (!value || value[0] != '/')
        return std::nullopt;
    return std::filesystem::path(value);
}

std::optional<std::filesystem::path> productFolder(const char* variable, const char* belowHome) {
    if (const auto base = absolutePathIn(variable))
        return *base / "velloren";
    if (const auto home = absolutePathIn("HOME"))
        return *home / belowHome / "velloren";
    return std::nullopt;
}

} // namespace

std::optional<std::filesystem::path> data() {
    return productFolder("XDG_DATA_HOME", ".local/share");
}

std::optional<std::filesystem::path> configuration() {
    return productFolder("XDG_CONFIG_HOME", ".config");
}

std::optional<std::filesystem::path> state() {
    return productFolder("XDG_STATE_HOME", ".local/state");
}

std::optional<std::filesystem::path> runtime() {
    if (const auto base = absolutePathIn("XDG_RUNTIME_DIR"))
        return *base / "velloren";
    return std::nullopt;
}

} // namespace velloren::directories
