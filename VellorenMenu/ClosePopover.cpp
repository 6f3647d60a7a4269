#include "VellorenMenu/ClosePopover.h"

#include "VellorenMenu/MenuAppDelegate.h"

namespace velloren {

void closePopover(QWidget& sender) {
    if (auto* delegate = MenuAppDelegate::ofApplication())
        delegate->closePopover(&sender);
}

} // namespace velloren
