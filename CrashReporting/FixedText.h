#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace velloren {

/// A text put together without the heap, for signal handlers: every operation is async-signal-safe. What does
/// not fit is left out.
class FixedText {
  public:
    FixedText& operator<<(std::string_view more);
    FixedText& operator<<(std::uint64_t number);

    /// In base 16, with "0x".
    FixedText& appendAddress(std::uint64_t address);

    /// The point of time that many seconds after the start of 1970, as "2026-11-21T09:52:41Z".
    /// `separator` stands in place of the colons.
    FixedText& appendTime(std::int64_t seconds, char separator = ':');

    [[nodiscard]] std::string_view view() const { return {text.data(), length}; }

    [[nodiscard]] const char* c_str() const { return text.data(); }

    /// To a descriptor; whatever that cannot take is lost.
    void writeTo(int descriptor) const { write(descriptor, view()); }

    static void write(int descriptor, std::string_view text);

  private:
    FixedText& appendNumber(std::uint64_t number, int base, std::size_t digits);

    std::array<char, 4200> text{}; // a path and a little more; always ends in a NUL
    std::size_t length = 0;
};

} // namespace velloren
