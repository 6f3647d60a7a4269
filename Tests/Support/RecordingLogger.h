#pragma once

#include "Services/VLogger.h"
#include "Tests/Support/Installable.h"

#include <mutex>
#include <vector>

namespace velloren {

/// Keeps the lines it is given. Any thread.
class RecordingLogger final : public Installable<RecordingLogger, Logger> {
  public:
    /// As "level file function message".
    [[nodiscard]] std::vector<std::string> lines() const {
        return each([](const Line& line) { return line.head + line.tail + line.message; });
    }

    /// As "level file:line function message".
    [[nodiscard]] std::vector<std::string> numberedLines() const {
        return each([](const Line& line) { return line.head + line.number + line.tail + line.message; });
    }

    [[nodiscard]] std::vector<std::string> messages() const {
        return each([](const Line& line) { return line.message; });
    }

    void clear() {
        const std::scoped_lock lock(mutex);
        recorded.clear();
    }

  protected:
    void write(Level level, const std::string& message, const LogOrigin& origin) override {
        const std::string word = level == Level::Debug ? "debug " : level == Level::Info ? "info " : "error ";
        const std::scoped_lock lock(mutex);
        recorded.push_back({word + origin.file, ":" + std::to_string(origin.line),
                            std::string(" ") + origin.function + " ", message});
    }

  private:
    struct Line {
        std::string head, number, tail, message;
    };

    std::vector<std::string> each(std::string (*text)(const Line&)) const {
        const std::scoped_lock lock(mutex);
        std::vector<std::string> texts;
        for (const Line& line : recorded)
            texts.push_back(text(line));
        return texts;
    }

    mutable std::mutex mutex;
    std::vector<Line> recorded;
};

} // namespace velloren
