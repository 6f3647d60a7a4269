#pragma once

/// How much memory this process keeps from the system.
namespace velloren {

/// From now on little memory is worth more than threads that need not wait for one another's allocations, and
/// large buffers go back to the system when they are freed. Main thread, before there are others.
void keepLittleMemory();

/// Gives back what is not in use, for after a time that took much more than the next will. Takes a moment.
/// Any thread.
void giveBackUnusedMemory();

} // namespace velloren
