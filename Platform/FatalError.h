#pragma once

#include <string_view>

namespace velloren {

/// Stops the process for something that cannot happen in a correct program: prints
/// "fatal error: {message}: file {file}, line {line}" on standard error and aborts. Any thread.
[[noreturn]] void fatalError(std::string_view message, std::string_view file = __builtin_FILE(),
                             unsigned line = __builtin_LINE());

} // namespace velloren
