#include "Services/Local/LocalLogger.h"

#include "Platform/Foundation/Directories.h"
#include "Platform/Foundation/PrivateFiles.h"
#include "Platform/Foundation/StandardError.h"
#include "Services/Local/Text.h"

#include <spdlog/logger.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/rotating_file_sink.h>

#include <chrono>
#include <filesystem>
#include <mutex>
#include <string_view>
#include <utility>

namespace velloren {

namespace {

constexpr const char* linePattern = "%Y-%m-%dT%H:%M:%S.%e%z %l %v";
constexpr std::size_t largestFile = std::size_t{1024} * 1024;
constexpr std::size_t rotatedFiles = 2;
constexpr std::size_t longestMessage = std::size_t{16} * 1024;
constexpr std::chrono::minutes pauseBetweenAttempts(1);

/// spdlog's rotating file, given up as a whole on the first error: it must not be used any more after a
/// failed rotation.
class LogFile final : public spdlog::sinks::base_sink<std::mutex> {
  public:
    LogFile(std::filesystem::path path, LocalLogger::Clock clock)
        : path(std::move(path)), clock(std::move(clock)) {}

  protected:
    void sink_it_(const spdlog::details::log_msg& message) override {
        if (!file && clock() < nextAttempt)
            return;
        try {
            if (!file && createPrivateFolder(path.parent_path())) {
                file = std::make_unique<Rotation>(path.string(), largestFile, rotatedFiles);
                file->set_pattern(linePattern);
            }
            if (file) {
                file->log(message);
                file->flush();
                return;
            }
        } catch (const spdlog::spdlog_ex&) {
            file.reset();
        }
        nextAttempt = clock() + pauseBetweenAttempts;
    }

    void flush_() override {}

  private:
    using Rotation = spdlog::sinks::rotating_file_sink_st;

    const std::filesystem::path path;
    const LocalLogger::Clock clock;
    std::unique_ptr<Rotation> file;
    std::chrono::steady_clock::time_point nextAttempt = std::chrono::steady_clock::time_point::min();
};

/// Standard error, and whoever else gets the lines.
class OtherLines final : public spdlog::sinks::base_sink<std::mutex> {
  public:
    explicit OtherLines(LocalLogger::LineObserver observer) : observer(std::move(observer)) {}

  protected:
    void sink_it_(const spdlog::details::log_msg& message) override {
        spdlog::memory_buf_t line;
        formatter_->format(message, line);
        const std::string_view text(line.data(), line.size());
        writeToStandardError(text);
        if (observer)
            observer(text.substr(0, text.size() - 1));
    }

    void flush_() override {}

  private:
    LocalLogger::LineObserver observer;
};

std::string shortened(const std::string& message) {
    return message.size() <= longestMessage ? message : message.substr(0, longestMessage) + "...";
}

} // namespace

LocalLogger::LocalLogger(const std::string& fileName, LineObserver observer, Clock clock)
    : logger(std::make_unique<spdlog::logger>("velloren")) {
    logger->sinks().push_back(std::make_shared<OtherLines>(std::move(observer)));
    logger->set_pattern(linePattern);
    if (const auto folder = directories::state())
        logger->sinks().push_back(std::make_shared<LogFile>(*folder / fileName, std::move(clock)));
    logger->set_level(spdlog::level::debug);
    logger->set_error_handler([](const std::string&) {});
}

LocalLogger::~LocalLogger() = default;

void LocalLogger::write(Level level, const std::string& message, const LogOrigin& origin) {
    static const auto levelOf = [](Level level) {
        switch (level) {
        case Level::Debug:
            return spdlog::level::debug;
        case Level::Info:
            return spdlog::level::info;
        case Level::Error:
            return spdlog::level::err;
        }
        return spdlog::level::err;
    };
    logger->log(levelOf(level), "{}:{} {} {}", origin.file, origin.line, origin.function,
                printableLine(shortened(message)));
}

} // namespace velloren
