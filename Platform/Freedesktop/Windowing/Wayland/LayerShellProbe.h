#pragma once

namespace velloren {

/// Whether the compositor of this session lets programs place surfaces of the desktop's own kind. Asked on a
/// connection of its own, before Qt has one, and waited for as Qt waits for it then.
[[nodiscard]] bool compositorHasLayerShell();

} // namespace velloren
