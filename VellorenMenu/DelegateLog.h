#pragma once

#include "Services/VLogger.h"

namespace velloren {

/// The origin of a log line of the application delegate, whose operations stand in several source files.
constexpr LogOrigin delegateFunction(const char* function, unsigned line = __builtin_LINE()) {
    return {"VellorenMenu/MenuAppDelegate", function, line};
}

} // namespace velloren
