#include "Platform/Desktop/Application.h"

#include "Platform/Desktop/QtApplication.h"
#include "Platform/Foundation/FatalError.h"
#include "Platform/Foundation/RunLoop.h"

#include <QCoreApplication>

namespace velloren {

namespace {

Application* sharedApplication = nullptr;

}

Application::Application() {
    sharedApplication = this;
    QtApplication::setQuitHandler([this] { terminate("<Event: Quit>"); });
}

Application::~Application() {
    QtApplication::setQuitHandler(nullptr);
    sharedApplication = nullptr;
}

Application& Application::shared() {
    if (!sharedApplication)
        fatalError("there is no application object");
    return *sharedApplication;
}

int Application::run() {
    RunLoop::main().post([this] {
        if (currentDelegate)
            currentDelegate->applicationDidFinishLaunching();
    });
    return QCoreApplication::exec();
}

void Application::reopen() {
    RunLoop::main().post([this] {
        if (currentDelegate)
            currentDelegate->applicationShouldHandleReopen();
    });
}

void Application::terminate(const std::string& sender) {
    if (terminating)
        return;
    using Reply = ApplicationDelegate::TerminateReply;
    if (currentDelegate && currentDelegate->applicationShouldTerminate(sender) == Reply::TerminateCancel)
        return;
    terminating = true;
    if (currentDelegate)
        currentDelegate->applicationWillTerminate();
    // quit() would first ask every window, and give up when one declines.
    QCoreApplication::exit(0);
}

std::string Application::description() const {
    return "<Application: " + QCoreApplication::applicationName().toStdString() + ">";
}

} // namespace velloren
