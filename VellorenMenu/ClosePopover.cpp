#include "VellorenMenu/ClosePopover.h"

#include "Platform/View.h"
#include "VellorenMenu/MenuAppDelegate.h"

namespace velloren {

void closePopover(View& sender) {
    if (auto* delegate = dynamic_cast<MenuAppDelegate*>(Application::shared().delegate()))
        delegate->closePopover(&sender);
}

} // namespace velloren
