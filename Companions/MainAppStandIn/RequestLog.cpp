#include "Companions/MainAppStandIn/RequestLog.h"

namespace velloren {

RequestLog::RequestLog(const std::string& fileName)
    : file(fileName.empty() ? nullptr : std::fopen(fileName.c_str(), "ae"), &std::fclose) {}

void RequestLog::add(const std::string& request) {
    if (file) {
        std::fputs((request + "\n").c_str(), file.get());
        std::fflush(file.get());
    }
    if (onRequest)
        onRequest(request);
}

} // namespace velloren
