#pragma once

#include <string_view>

namespace velloren {

/// Stops the process for something that cannot happen in a correct program: prints
/// "fatal error: {message}: file {file}, line {line}" on standard error and aborts. Any thread.
[[noreturn]] void fatalError(std::string_view message, std::string_view file = __builtin_FILE(),
                             unsigned line = __builtin_LINE());

/// Has `observer` told of the report before the process aborts; none tells nobody. Any thread.
void setFatalErrorObserver(void (*observer)(std::string_view report));

} // namespace velloren
