#pragma once

#include <array>
#include <functional>

namespace velloren {

/// What the agent's action menu lists, in this order, wherever it shows.
enum class ActionItem { Support, HelpCenter, Separator, Quit };

inline constexpr std::array actionItems{ActionItem::Support, ActionItem::HelpCenter, ActionItem::Separator,
                                        ActionItem::Quit};

/// Empty for the separator.
[[nodiscard]] const char* titleOf(ActionItem item);

/// Does what the item is for; nothing for the separator. `closePopover` is called before whatever leads the
/// user elsewhere. Main thread only.
void perform(ActionItem item, const std::function<void()>& closePopover);

} // namespace velloren
