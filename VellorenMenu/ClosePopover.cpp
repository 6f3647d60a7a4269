#include "VellorenMenu/ClosePopover.h"

#include "VellorenMenu/MenuAppDelegate.h"

namespace velloren {

void closePopover(QWidget& sender) {
    if (auto* delegate = dynamic_cast<MenuAppDelegate*>(Application::shared().delegate()))
        delegate->closePopover(&sender);
}

} // namespace velloren
