#include "Services/VFoundation.h"

#include "Platform/Foundation/RunLoop.h"

#include <utility>

namespace velloren {

namespace {

/// Takes a text apart from its front; after the first mismatch everything fails.
class Scanner {
  public:
    explicit Scanner(std::string_view text) : rest(text) {}

    int digits(std::size_t count) {
        int number = 0;
        for (std::size_t i = 0; i < count; ++i) {
            const char digit = next();
            matches = matches && digit >= '0' && digit <= '9';
            number = matches ? number * 10 + (digit - '0') : 0;
        }
        return number;
    }

    void literal(char expected) { matches = next() == expected && matches; }

    char next() {
        if (rest.empty()) {
            matches = false;
            return '\0';
        }
        const char first = rest.front();
        rest.remove_prefix(1);
        return first;
    }

    void fail() { matches = false; }

    [[nodiscard]] bool succeeded() const { return matches && rest.empty(); }

  private:
    std::string_view rest;
    bool matches = true;
};

std::chrono::year_month_day scanDay(Scanner& scanner) {
    const std::chrono::year year(scanner.digits(4));
    scanner.literal('-');
    const std::chrono::month month(static_cast<unsigned>(scanner.digits(2)));
    scanner.literal('-');
    const std::chrono::day day(static_cast<unsigned>(scanner.digits(2)));
    const std::chrono::year_month_day date(year, month, day);
    if (!date.ok())
        scanner.fail();
    return date;
}

std::chrono::minutes scanHourAndMinute(Scanner& scanner) {
    const int hour = scanner.digits(2);
    scanner.literal(':');
    const int minute = scanner.digits(2);
    if (hour > 23 || minute > 59)
        scanner.fail();
    return std::chrono::hours(hour) + std::chrono::minutes(minute);
}

std::chrono::seconds scanSecond(Scanner& scanner) {
    const int second = scanner.digits(2);
    if (second > 59)
        scanner.fail();
    return std::chrono::seconds(second);
}

std::chrono::minutes scanOffset(Scanner& scanner) {
    const char sign = scanner.next();
    if (sign == 'Z')
        return std::chrono::minutes(0);
    if (sign != '+' && sign != '-')
        scanner.fail();
    const std::chrono::minutes offset = scanHourAndMinute(scanner);
    return sign == '-' ? -offset : offset;
}

class StartTimeFormatter final : public MeetingDateFormatter {
  public:
    [[nodiscard]] std::optional<Date> dateFromString(std::string_view text) const override {
        Scanner scanner(text);
        const auto day = scanDay(scanner);
        scanner.literal('T');
        const auto hourAndMinute = scanHourAndMinute(scanner);
        scanner.literal(':');
        const auto second = scanSecond(scanner);
        const auto offset = scanOffset(scanner);
        if (!scanner.succeeded())
            return std::nullopt;
        return Date(std::chrono::sys_days(day) + hourAndMinute + second - offset);
    }
};

} // namespace

void delay(double seconds, std::function<void()> closure) {
    RunLoop::main().postAfter(RunLoop::Seconds(seconds), std::move(closure));
}

const MeetingDateFormatter& meetingDateFormatter() {
    static const StartTimeFormatter formatter;
    return formatter;
}

} // namespace velloren
