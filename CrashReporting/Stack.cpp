#include "CrashReporting/StackModule.h"

#define BACKWARD_HAS_DW 1
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wsign-conversion"
#pragma GCC diagnostic ignored "-Wpedantic"
#include <backward.hpp>
#pragma GCC diagnostic pop

#include <cstdio>
#include <ucontext.h>

namespace {

constexpr std::size_t deepest = 64;

/// Where the interrupted code was; none where this processor's registers are not known here.
void* interruptedAt([[maybe_unused]] void* context) {
#if defined(__x86_64__)
    return reinterpret_cast<void*>(static_cast<ucontext_t*>(context)->uc_mcontext.gregs[REG_RIP]);
#elif defined(__aarch64__)
    return reinterpret_cast<void*>(static_cast<ucontext_t*>(context)->uc_mcontext.pc);
#else
    return nullptr;
#endif
}

} // namespace

void velloren_write_stack(int descriptor, void* context) {
    backward::StackTrace stack;
    if (void* place = interruptedAt(context))
        stack.load_from(place, deepest, context);
    else
        stack.load_here(deepest, context);
    backward::Printer printer;
    printer.snippet = false;
    printer.address = true;
    printer.color_mode = backward::ColorMode::never;
    if (std::FILE* file = ::fdopen(::dup(descriptor), "w")) {
        printer.print(stack, file);
        std::fclose(file);
    }
}
