#include "VellorenMenu/ActionItems.h"

#include "Platform/Desktop/Application.h"
#include "Platform/Desktop/Workspace.h"
#include "VellorenMenu/Commands.h"
#include "VellorenMenu/URLs.h"

namespace velloren {

namespace {

void openHelpCenter() {
    if (const auto address = URL::fromString(URLs::helpCenterAddress()))
        Workspace::shared().openURL(*address);
}

void quit() {
    Application& application = Application::shared();
    application.terminate(application.description());
}

} // namespace

const char* titleOf(ActionItem item) {
    switch (item) {
    case ActionItem::Support:
        return "Support";
    case ActionItem::HelpCenter:
        return "Help Center";
    case ActionItem::Separator:
        return "";
    case ActionItem::Quit:
        return "Quit";
    }
    return "";
}

void perform(ActionItem item, const std::function<void()>& closePopover) {
    switch (item) {
    case ActionItem::Support:
        closePopover();
        SupportCommand().execute();
        break;
    case ActionItem::HelpCenter:
        closePopover();
        openHelpCenter();
        break;
    case ActionItem::Separator:
        break;
    case ActionItem::Quit:
        quit();
        break;
    }
}

} // namespace velloren
