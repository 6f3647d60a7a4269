#pragma once

#include <map>
#include <optional>
#include <string>

namespace velloren {

/// The texts in an INI file of the form that QSettings writes, by "group/key". A key without a group, and one
/// in the group "General", stands alone. Lists and values of Qt's own types are left out, and not turned
/// into the objects that they describe. Any thread.
[[nodiscard]] std::map<std::string, std::string, std::less<>> textsInIni(const std::string& contents);

/// The contents with that text for the key, or without the key where there is none; everything else stays as
/// it is. The key is of ASCII letters, digits and "_-.", but for the "/" behind its group. Any thread.
[[nodiscard]] std::string iniWithText(const std::string& contents, const std::string& key,
                                      const std::optional<std::string>& text);

} // namespace velloren
