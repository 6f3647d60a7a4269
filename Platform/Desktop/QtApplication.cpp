#include "Platform/Desktop/QtApplication.h"

#include <QEvent>
#include <QSessionManager>

#include <exception>

namespace velloren {

namespace {

std::function<void(const std::string&)> exceptionHandler;
std::function<void()> quitHandler;

} // namespace

QtApplication::QtApplication(int& argc, char** argv) : QApplication(argc, argv) {
    const auto refuseRestart = [](QSessionManager& session) {
        session.setRestartHint(QSessionManager::RestartNever);
    };
    connect(this, &QGuiApplication::saveStateRequest, refuseRestart);
    connect(this, &QGuiApplication::commitDataRequest, refuseRestart);
}

void QtApplication::setExceptionHandler(std::function<void(const std::string&)> handler) {
    exceptionHandler = std::move(handler);
}

void QtApplication::setQuitHandler(std::function<void()> handler) {
    quitHandler = std::move(handler);
}

bool QtApplication::event(QEvent* event) {
    if (event->type() != QEvent::Quit || !quitHandler)
        return QApplication::event(event);
    event->accept();
    quitHandler();
    return true;
}

bool QtApplication::notify(QObject* receiver, QEvent* event) {
    if (!exceptionHandler)
        return QApplication::notify(receiver, event);
    try {
        return QApplication::notify(receiver, event);
    } catch (const std::exception& exception) {
        exceptionHandler(exception.what());
    } catch (...) {
        exceptionHandler("of a type without a description");
    }
    return false;
}

} // namespace velloren
