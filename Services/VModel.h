#pragma once

#include <optional>
#include <string>

namespace velloren {

/// A meeting as the product's processes hand it around. Texts are UTF-8; an absent field is not known.
struct Meeting {
    std::optional<std::string> id;        ///< handed back to the main app to open the meeting
    std::optional<std::string> title;     ///< shown as it is: written by other people
    std::optional<std::string> startTime; ///< in the form that `meetingDateFormatter` parses

    friend bool operator==(const Meeting&, const Meeting&) = default;
};

} // namespace velloren
