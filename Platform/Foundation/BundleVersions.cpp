#include "Platform/Foundation/BundleVersions.h"

#include "Platform/Foundation/TextIn.h"

namespace velloren {

namespace {

std::optional<std::string> text(const Bundle& bundle, std::string_view key) {
    if (!bundle.infoDictionary())
        return std::nullopt;
    const auto* value = textIn(*bundle.infoDictionary(), key);
    return value ? std::optional(*value) : std::nullopt;
}

} // namespace

std::optional<std::string> bundleShortVersion(const Bundle& bundle) {
    return text(bundle, "CFBundleShortVersionString");
}

std::optional<std::string> bundleVersion(const Bundle& bundle) {
    return text(bundle, "CFBundleVersion");
}

std::optional<std::string> appVersion(const Bundle&) {
    const auto version = bundleShortVersion(Bundle::mainBundle());
    const auto build = bundleVersion(Bundle::mainBundle());
    return version && build ? std::optional(*version + " (" + *build + ")") : std::nullopt;
}

} // namespace velloren
