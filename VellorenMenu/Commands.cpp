#include "VellorenMenu/Commands.h"

#include "Platform/Desktop/Workspace.h"
#include "Platform/Foundation/Bundle.h"
#include "Platform/Foundation/BundleVersions.h"
#include "Shared/VApp.h"

namespace velloren {

namespace {

std::string supportSubject() {
    const Bundle& bundle = Bundle::mainBundle();
    const std::string subjectLine = bundle.localizedString("Support subject line", "support");
    const auto version = appVersion(bundle);
    return version ? "Velloren " + *version + " " + subjectLine : "Velloren " + subjectLine;
}

std::optional<URL> supportMail() {
    const auto subject = percentEncodedForQuery(supportSubject());
    if (!subject)
        return std::nullopt;
    return URL::fromString("mailto:" + VApp::supportMailAddress() + "?subject=" + *subject);
}

} // namespace

void SupportCommand::execute() {
    const auto become = [this](CommandState next) {
        state = next;
        if (stateUpdated)
            stateUpdated(next);
    };
    become(CommandState::executing);
    const auto mail = supportMail();
    if (!mail) {
        become(CommandState::failed);
        return;
    }
    Workspace::shared().openURL(*mail);
    become(CommandState::finished);
}

} // namespace velloren
