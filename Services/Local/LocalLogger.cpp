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
#include <system_error>
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
            if (!file)
                open();
            if (file) {
                file->log(message);
                file->flush();
            }
        } catch (const spdlog::spdlog_ex&) {
            file.reset();
        }
        if (!file)
            nextAttempt = clock() + pauseBetweenAttempts;
    }

    void flush_() override {}

  private:
    using Rotation = spdlog::sinks::rotating_file_sink_st;

    void open() {
        if (!createPrivateFolder(path.parent_path()) || !createPrivateFile(path))
            return;
        for (std::size_t index = 1; index <= rotatedFiles; ++index) {
            const std::string older = Rotation::calc_filename(path.string(), index);
            if (std::error_code error; std::filesystem::exists(older, error))
                (void)createPrivateFile(older);
        }
        spdlog::file_event_handlers handlers; // called for the files that a rotation begins as well
        handlers.before_open = [](const std::string& name) { (void)createPrivateFile(name); };
        file = std::make_unique<Rotation>(path.string(), largestFile, rotatedFiles, false, handlers);
        file->set_pattern(linePattern);
    }

    const std::filesystem::path path;
    const LocalLogger::Clock clock;
    std::unique_ptr<Rotation> file;
    std::chrono::steady_clock::time_point nextAttempt = std::chrono::steady_clock::time_point::min();
};

std::string_view view(const spdlog::memory_buf_t& text) {
    return {text.data(), text.size()};
}

/// Lines that find no room are left out, whole; a line with their number stands before the next one that
/// does.
class StandardError final : public spdlog::sinks::base_sink<std::mutex> {
  protected:
    void sink_it_(const spdlog::details::log_msg& message) override {
        spdlog::memory_buf_t line;
        formatter_->format(message, line);
        rest.erase(0, writeToStandardError(rest));
        if (leftOut > 0 && begin("(" + std::to_string(leftOut) + " lines found no room here)\n"))
            leftOut = 0;
        if (leftOut > 0 || !begin(view(line)))
            ++leftOut;
    }

    void flush_() override {}

  private:
    bool begin(std::string_view line) {
        if (!rest.empty())
            return false;
        const std::size_t written = writeToStandardError(line);
        if (written > 0)
            rest = line.substr(written);
        return written > 0;
    }

    std::string rest; ///< of the line that has begun
    std::size_t leftOut = 0;
};

class ObservedLines final : public spdlog::sinks::base_sink<std::mutex> {
  public:
    explicit ObservedLines(LocalLogger::LineObserver observer) : observer(std::move(observer)) {}

  protected:
    void sink_it_(const spdlog::details::log_msg& message) override {
        spdlog::memory_buf_t line;
        formatter_->format(message, line);
        const std::string_view text = view(line);
        observer(text.substr(0, text.find_last_not_of('\n') + 1));
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
    auto standardError = std::make_shared<StandardError>();
    standardError->set_pattern(linePattern);
    logger->sinks().push_back(std::move(standardError));
    if (const auto folder = directories::state())
        logger->sinks().push_back(std::make_shared<LogFile>(*folder / fileName, std::move(clock)));
    if (observer) {
        logger->sinks().push_back(std::make_shared<ObservedLines>(std::move(observer)));
        logger->sinks().back()->set_pattern(linePattern);
    }
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
