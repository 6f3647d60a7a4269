#pragma once

#include "Platform/Foundation/SharedInstance.h"
#include "Services/VLogger.h"

#include <mutex>
#include <string>
#include <vector>

namespace velloren {

/// Keeps the lines it is given, as "level file function message"; `withLines` adds the line number as
/// "level file:line function message". Any thread.
class RecordingLogger final : public Logger {
  public:
    /// Makes a recording logger the process's own and returns it.
    static RecordingLogger& install() {
        SharedInstance<Logger>::provide([] { return std::make_unique<RecordingLogger>(); });
        return static_cast<RecordingLogger&>(Logger::sharedInstance());
    }

    [[nodiscard]] std::vector<std::string> lines() const {
        const std::scoped_lock lock(mutex);
        return recorded;
    }

    [[nodiscard]] std::vector<std::string> numberedLines() const {
        const std::scoped_lock lock(mutex);
        return numbered;
    }

    /// The messages alone.
    [[nodiscard]] std::vector<std::string> messages() const {
        const std::scoped_lock lock(mutex);
        return texts;
    }

    void clear() {
        const std::scoped_lock lock(mutex);
        recorded.clear();
        numbered.clear();
        texts.clear();
    }

  protected:
    void write(Level level, const std::string& message, const LogOrigin& origin) override {
        const std::string word = level == Level::Debug ? "debug" : level == Level::Info ? "info" : "error";
        const std::string tail = std::string(" ") + origin.function + " " + message;
        const std::scoped_lock lock(mutex);
        recorded.push_back(word + " " + origin.file + tail);
        numbered.push_back(word + " " + origin.file + ":" + std::to_string(origin.line) + tail);
        texts.push_back(message);
    }

  private:
    mutable std::mutex mutex;
    std::vector<std::string> recorded;
    std::vector<std::string> numbered;
    std::vector<std::string> texts;
};

} // namespace velloren
