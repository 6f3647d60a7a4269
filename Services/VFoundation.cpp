#include "Services/VFoundation.h"

#include "Platform/Foundation/RunLoop.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace velloren {

namespace {

/// Whether the text has that form, in which 0 stands for any digit.
bool hasForm(std::string_view text, std::string_view form) {
    return std::equal(text.begin(), text.end(), form.begin(), form.end(), [](char character, char model) {
        return model == '0' ? character >= '0' && character <= '9' : character == model;
    });
}

int number(std::string_view digits) {
    int value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return value;
}

/// Of `00:00`. None where no day has such a time.
std::optional<std::chrono::minutes> hourAndMinute(std::string_view text) {
    const int hour = number(text.substr(0, 2));
    const int minute = number(text.substr(3));
    if (hour > 23 || minute > 59)
        return std::nullopt;
    return std::chrono::hours(hour) + std::chrono::minutes(minute);
}

std::optional<std::chrono::minutes> offset(std::string_view text) {
    if (text == "Z")
        return std::chrono::minutes(0);
    if (!hasForm(text, "+00:00") && !hasForm(text, "-00:00"))
        return std::nullopt;
    const auto size = hourAndMinute(text.substr(1));
    return size && text.front() == '-' ? -*size : size;
}

class StartTimeFormatter final : public MeetingDateFormatter {
  public:
    [[nodiscard]] std::optional<Date> dateFromString(std::string_view text) const override {
        constexpr std::string_view form = "0000-00-00T00:00:00";
        if (!hasForm(text.substr(0, form.size()), form))
            return std::nullopt;
        const std::chrono::year_month_day day(std::chrono::year(number(text.substr(0, 4))),
                                              std::chrono::month(unsigned(number(text.substr(5, 2)))),
                                              std::chrono::day(unsigned(number(text.substr(8, 2)))));
        const auto time = hourAndMinute(text.substr(11, 5));
        const std::chrono::seconds second(number(text.substr(17, 2)));
        const auto east = offset(text.substr(form.size()));
        if (!day.ok() || !time || second >= std::chrono::minutes(1) || !east)
            return std::nullopt;
        return Date(std::chrono::sys_days(day) + *time + second - *east);
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
