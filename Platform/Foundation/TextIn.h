#pragma once

#include <string>
#include <string_view>
#include <variant>

namespace velloren {

/// The text under `key` in a dictionary whose values are of several types; none where the key is missing or
/// stands for something else. It lives as long as the dictionary.
template <class Dictionary>
[[nodiscard]] const std::string* textIn(const Dictionary& dictionary, std::string_view key) {
    const auto entry = dictionary.find(key);
    return entry == dictionary.end() ? nullptr : std::get_if<std::string>(&entry->second);
}

} // namespace velloren
