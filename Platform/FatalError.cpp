#include "Platform/FatalError.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace velloren {

void fatalError(std::string_view message, std::string_view file, unsigned line) {
    const std::string report = "fatal error: " + std::string(message) + ": file " + std::string(file) +
                               ", line " + std::to_string(line) + "\n";
    std::fputs(report.c_str(), stderr);
    std::fflush(stderr);
    std::abort();
}

} // namespace velloren
