#pragma once

#include "Services/VModel.h"
#include "Services/VUserManager.h"

#include <functional>
#include <optional>
#include <span>
#include <vector>

/// What holds for every view of the upcoming meetings, the popover's rows as the entries of a menu.
/// Main thread only.
namespace velloren {

class MainAppLink;

/// The answer of the store or the main app; none where that could not tell.
using FetchedMeetings = std::optional<std::vector<Meeting>>;

inline constexpr std::size_t mostMeetingsShown = 3;

/// Those that show: the first three, in the order in which they came.
[[nodiscard]] std::span<const Meeting> shownMeetings(const FetchedMeetings& fetched);

/// The user for whom meetings are fetched and may be created. None while nobody is logged in.
[[nodiscard]] std::optional<User> loggedInUser();

/// Asks the main app. `completion` gets its answer on a later turn of the main loop; never where the main app
/// is not connected or does not answer.
void fetchFromMainApp(MainAppLink& link, std::function<void(const FetchedMeetings&)> completion);

} // namespace velloren
