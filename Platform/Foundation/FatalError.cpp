#include "Platform/Foundation/FatalError.h"

#include "Platform/Foundation/StandardError.h"

#include <atomic>
#include <cstdlib>
#include <string>

namespace velloren {

namespace {

std::atomic<void (*)(std::string_view)> observer = nullptr;

}

void setFatalErrorObserver(void (*newObserver)(std::string_view)) {
    observer = newObserver;
}

void fatalError(std::string_view message, std::string_view file, unsigned line) {
    const std::string report = "fatal error: " + std::string(message) + ": file " + std::string(file) +
                               ", line " + std::to_string(line);
    writeToStandardError(report + "\n");
    if (const auto tell = observer.load())
        tell(report);
    std::abort();
}

} // namespace velloren
