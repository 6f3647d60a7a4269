#pragma once

#include "Services/VLogger.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace spdlog {
class logger;
}

namespace velloren {

/// Logs to standard error and to a file in the product's state folder, which rotates: three files of 1 MiB,
/// the newest without a number. A call is one line, flushed before the call returns:
///
///     2026-03-07T14:05:00.123+01:00 info VellorenMenu/MenuAppDelegate:42 openMeeting(_:) the message
///
/// Standard error makes no call wait: what finds no room there is left out. Characters that would break the
/// line or hide part of it are escaped, and a message is cut after 16 KiB. While the file cannot be made or
/// written, lines go to standard error alone; it is tried again once a minute.
class LocalLogger final : public Logger {
  public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;
    /// Gets every line as it is written, without its end. Any thread.
    using LineObserver = std::function<void(std::string_view line)>;

    /// `fileName` is the name in the state folder: "menu.log" for the agent. The observer may be none.
    explicit LocalLogger(const std::string& fileName, LineObserver observer = nullptr,
                         Clock clock = std::chrono::steady_clock::now);
    ~LocalLogger() override;

  protected:
    void write(Level level, const std::string& message, const LogOrigin& origin) override;

  private:
    std::unique_ptr<spdlog::logger> logger;
};

} // namespace velloren
