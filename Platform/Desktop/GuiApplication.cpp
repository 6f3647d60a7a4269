#include "Platform/Desktop/GuiApplication.h"

#include <exception>

namespace velloren {

namespace {

std::function<void(const std::string&)> exceptionHandler;

}

void GuiApplication::setExceptionHandler(std::function<void(const std::string&)> handler) {
    exceptionHandler = std::move(handler);
}

bool GuiApplication::notify(QObject* receiver, QEvent* event) {
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
