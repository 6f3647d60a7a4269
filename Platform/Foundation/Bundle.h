#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace velloren {

/// A set of resources with a dictionary of information about itself. Main thread only.
class Bundle {
  public:
    /// The values keep the type they have in the file; lists and dictionaries arrive as none.
    using Info = std::map<std::string, std::variant<std::monostate, bool, double, std::string>, std::less<>>;

    /// The program's own bundle, provided through SharedInstance<Bundle>.
    [[nodiscard]] static const Bundle& mainBundle();

    /// The bundle in a folder, or in one of the program's resources (":/folder").
    [[nodiscard]] static std::unique_ptr<Bundle> inFolder(const std::string& folder);

    /// None without an `Info.json` that holds a dictionary.
    [[nodiscard]] const std::optional<Info>& infoDictionary() const { return info; }

    /// The text for `key` in the user's language; the key itself where there is no translation. `comment` is
    /// what translators were told.
    [[nodiscard]] std::string localizedString(const std::string& key, const std::string& comment) const;

  private:
    explicit Bundle(std::optional<Info> info) : info(std::move(info)) {}

    std::optional<Info> info;
};

} // namespace velloren
