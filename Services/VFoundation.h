#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string_view>

namespace velloren {

/// A moment, to the millisecond.
using Date = std::chrono::time_point<std::chrono::system_clock, std::chrono::milliseconds>;

/// Runs `closure` once on the main run loop, `seconds` from now. Main thread only.
void delay(double seconds, std::function<void()> closure);

/// Reads the start times of meetings: ISO 8601 with offset, `yyyy-MM-dd'T'HH:mm:ssXXX`, for example
/// `2026-03-07T14:05:00+01:00`. Main thread only.
class MeetingDateFormatter {
  public:
    virtual ~MeetingDateFormatter() = default;

    /// Absence means that the text is not such a time, from its first to its last character.
    [[nodiscard]] virtual std::optional<Date> dateFromString(std::string_view text) const = 0;
};

/// The shared formatter of `Meeting::startTime`.
[[nodiscard]] const MeetingDateFormatter& meetingDateFormatter();

} // namespace velloren
