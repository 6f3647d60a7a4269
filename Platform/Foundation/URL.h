#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace velloren {

/// A well-formed address, percent-encoded. Any thread.
class URL {
  public:
    /// None for a text that is not an address.
    [[nodiscard]] static std::optional<URL> fromString(const std::string& text);

    [[nodiscard]] const std::string& absoluteString() const { return text; }

    friend bool operator==(const URL&, const URL&) = default;

  private:
    explicit URL(std::string text) : text(std::move(text)) {}

    std::string text;
};

/// `text` with every byte percent-encoded that is not allowed in the query of an address: letters, digits and
/// "!$&'()*+,-./:;=?@_~" stay. None when the text is not UTF-8.
[[nodiscard]] std::optional<std::string> percentEncodedForQuery(std::string_view text);

} // namespace velloren
