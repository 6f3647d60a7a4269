#include "Services/VLogger.h"

#include "Platform/Foundation/SharedInstance.h"

namespace velloren {

Logger& Logger::sharedInstance() {
    return SharedInstance<Logger>::get();
}

void Logger::info(const std::optional<std::string>& message, LogOrigin origin) {
    write(Level::Info, message.value_or("nil"), origin);
}

void Logger::debug(const std::optional<std::string>& message, LogOrigin origin) {
    write(Level::Debug, message.value_or("nil"), origin);
}

void Logger::error(const std::optional<std::string>& message, LogOrigin origin) {
    write(Level::Error, message.value_or("nil"), origin);
}

} // namespace velloren
