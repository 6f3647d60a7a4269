#pragma once

#include <chrono>

namespace velloren {

/// Whether the compositor of this session lets programs place surfaces of the desktop's own kind. Asked on a
/// connection of its own, before Qt has one; a compositor that does not answer within `limit` has not.
[[nodiscard]] bool compositorHasLayerShell(std::chrono::milliseconds limit);

} // namespace velloren
