#pragma once

#include <string_view>

namespace velloren {

/// Gives standard input, output and error a place where this process was started without, before anything
/// else takes it and is written to or closed for one of them. Main thread, first of all.
void openMissingStandardStreams();

/// From now on nothing that this process, or a library of it, writes to standard error waits for who reads
/// that: what does not fit is lost. Main thread, before there are others.
void neverWaitForStandardError();

/// Writes as much as standard error takes at once; the rest is lost. Any thread, and async-signal-safe.
void writeToStandardError(std::string_view text);

} // namespace velloren
