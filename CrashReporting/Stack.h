#pragma once

namespace velloren {

/// Writes the stack of the code that a signal interrupted, with functions, files and lines as far as they are
/// known. `context` is what the signal's handler was given. Not async-signal-safe: it allocates and reads
/// files.
void writeStack(int descriptor, void* context);

} // namespace velloren
