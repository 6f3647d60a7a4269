#pragma once

/// What the module exports under this name: writes the stack of the code that a signal interrupted, with
/// functions, files and lines as far as they are known. `context` is what the signal's handler was given. Not
/// async-signal-safe: it allocates and reads files.
extern "C" void velloren_write_stack(int descriptor, void* context);

namespace velloren {

/// Loads the module that was installed or built with this program, and has it write the stack. False where
/// there is no such module. As little async-signal-safe.
[[nodiscard]] bool writeStack(int descriptor, void* context);

} // namespace velloren
