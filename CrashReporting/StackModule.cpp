#include "CrashReporting/StackModule.h"

#include <dlfcn.h>
#include <filesystem>
#include <system_error>

namespace velloren {

bool writeStack(int descriptor, void* context) {
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error)
        return false;
    const auto file = program.parent_path().parent_path() / VELLOREN_STACK_MODULE;
    void* module = ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!module)
        return false;
    const auto write =
        reinterpret_cast<decltype(&velloren_write_stack)>(::dlsym(module, "velloren_write_stack"));
    if (!write)
        return false;
    write(descriptor, context);
    return true;
}

} // namespace velloren
