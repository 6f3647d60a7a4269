#pragma once

#include "Services/VLogger.h"

namespace velloren {

/// The origin of a log line of the application delegate. Those of its link to the main app name the delegate
/// as well: support looks for all of them under that name.
constexpr LogOrigin delegateFunction(const char* function, unsigned line = __builtin_LINE()) {
    return {"VellorenMenu/MenuAppDelegate", function, line};
}

} // namespace velloren
