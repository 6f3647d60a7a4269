#pragma once

#include <map>
#include <string>

namespace velloren {

/// The texts in an INI file of the form that QSettings writes, by "group/key". A key without a group, and one
/// in the group "General", stands alone. A list, a value of one of Qt's own types and a text with a NUL are
/// left out; none of them is turned into the object that it describes. Any thread.
[[nodiscard]] std::map<std::string, std::string, std::less<>> textsInIni(const std::string& contents);

} // namespace velloren
