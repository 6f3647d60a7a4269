#pragma once

#include "Services/VLogger.h"
#include "Tests/Support/Installable.h"

#include <vector>

namespace velloren {

/// Keeps the lines it is given, which one thread at a time may do.
class RecordingLogger final : public Installable<RecordingLogger, Logger> {
  public:
    std::vector<std::string> lines;         ///< as "level file function message"
    std::vector<std::string> numberedLines; ///< as "level file:line function message"
    std::vector<std::string> messages;

    void clear() {
        lines.clear();
        numberedLines.clear();
        messages.clear();
    }

  protected:
    void write(Level level, const std::string& message, const LogOrigin& origin) override {
        const std::string word = level == Level::Debug ? "debug " : level == Level::Info ? "info " : "error ";
        const std::string rest = std::string(" ") + origin.function + " " + message;
        lines.push_back(word + origin.file + rest);
        numberedLines.push_back(word + origin.file + ":" + std::to_string(origin.line) + rest);
        messages.push_back(message);
    }
};

} // namespace velloren
