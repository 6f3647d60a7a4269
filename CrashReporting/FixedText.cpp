#include "CrashReporting/FixedText.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <unistd.h>

namespace velloren {

FixedText& FixedText::operator<<(std::string_view more) {
    const std::size_t count = std::min(more.size(), text.size() - 1 - length);
    std::copy_n(more.begin(), count, text.begin() + std::ptrdiff_t(length));
    length += count;
    return *this;
}

FixedText& FixedText::operator<<(std::uint64_t number) {
    return appendNumber(number, 10, 1);
}

FixedText& FixedText::appendAddress(std::uint64_t address) {
    *this << "0x";
    return appendNumber(address, 16, 1);
}

FixedText& FixedText::appendTime(std::int64_t seconds, char separator) {
    using namespace std::chrono;
    const sys_seconds time{std::chrono::seconds(seconds)};
    const year_month_day day(floor<days>(time));
    const hh_mm_ss clock(time - floor<days>(time));
    const std::string_view between(&separator, 1);
    appendNumber(std::uint64_t(int(day.year())), 10, 4) << "-";
    appendNumber(unsigned(day.month()), 10, 2) << "-";
    appendNumber(unsigned(day.day()), 10, 2) << "T";
    appendNumber(std::uint64_t(clock.hours().count()), 10, 2) << between;
    appendNumber(std::uint64_t(clock.minutes().count()), 10, 2) << between;
    return appendNumber(std::uint64_t(clock.seconds().count()), 10, 2) << "Z";
}

FixedText& FixedText::appendNumber(std::uint64_t number, int base, std::size_t digits) {
    std::array<char, 20> written{};
    const auto end = std::to_chars(written.begin(), written.end(), number, base).ptr;
    const auto count = std::size_t(end - written.begin());
    for (std::size_t digit = count; digit < digits; ++digit)
        *this << "0";
    return *this << std::string_view(written.data(), count);
}

void FixedText::write(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = ::write(descriptor, text.data(), text.size());
        if (count <= 0)
            return;
        text.remove_prefix(std::size_t(count));
    }
}

} // namespace velloren
