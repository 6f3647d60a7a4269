#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace velloren {

/// Where a log line comes from: the source unit ("VellorenMenu/MenuAppDelegate"), the calling function's name
/// as a fixed text, and the source line. The texts are literals: they outlive the call.
struct LogOrigin {
    constexpr LogOrigin(const char* file, const char* function, unsigned line = __builtin_LINE())
        : file(file), function(function), line(line) {}

    const char* file;
    const char* function;
    unsigned line;
};

/// The product's logger. Every operation may be called from any thread.
class Logger {
  public:
    Logger() = default;
    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;
    virtual ~Logger() = default;

    /// The process-wide logger, made on first use by the maker in SharedInstance<Logger>.
    static Logger& sharedInstance();

    /// An absent message is allowed and logged as "nil".
    void info(const std::optional<std::string>& message, LogOrigin origin);
    void debug(const std::optional<std::string>& message, LogOrigin origin);
    void error(const std::optional<std::string>& message, LogOrigin origin);

  protected:
    enum class Level { Debug, Info, Error };

    /// Writes one line. Called from any thread.
    virtual void write(Level level, const std::string& message, const LogOrigin& origin) = 0;
};

} // namespace velloren
