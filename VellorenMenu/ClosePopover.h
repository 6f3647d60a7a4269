#pragma once

class QWidget;

namespace velloren {

/// Closes the popover through the application's delegate, in the name of any view inside it. Does nothing
/// when the delegate is missing or is not the menu agent's.
void closePopover(QWidget& sender);

} // namespace velloren
