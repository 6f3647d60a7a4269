#pragma once

#include <string>

/// What the module exports under this name: writes the stack of the code that a signal interrupted, with
/// functions, files and lines as far as they are known. `context` is what the signal's handler was given. Not
/// async-signal-safe: it allocates and reads files.
extern "C" void velloren_write_stack(int descriptor, void* context);

namespace velloren {

/// The module's file beside this program, installed or built; absolute.
[[nodiscard]] std::string stackModule();

/// Loads the module from `file` and has it write the stack. False where there is no such module.
[[nodiscard]] bool writeStack(const char* file, int descriptor, void* context);

} // namespace velloren
