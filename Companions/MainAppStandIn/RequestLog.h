#pragma once

#include <cstdio>
#include <functional>
#include <memory>
#include <string>

namespace velloren {

/// What the main app was asked, a line per request: "open ID", "create", "fetch". Main thread only.
class RequestLog {
  public:
    /// Lines also go to the file, each at once; an empty name keeps none.
    explicit RequestLog(const std::string& fileName);

    void add(const std::string& request);

    /// Called with each request as it comes.
    std::function<void(const std::string&)> onRequest;

  private:
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file;
};

} // namespace velloren
