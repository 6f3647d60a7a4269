#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <string_view>

namespace velloren {

/// The last lines of a log, in memory that a signal handler can read. A long line is cut.
class RecentLines {
  public:
    /// Any thread.
    void append(std::string_view line);

    /// Gives `visit` the lines, oldest first. Async-signal-safe where that is.
    template <class Visit>
    void visit(const Visit& visit) const {
        const std::size_t end = appended;
        for (std::size_t index = end - std::min(end, capacity); index < end; ++index) {
            const Line& line = lines[index % capacity];
            visit(std::string_view(line.text.data(), line.length));
        }
    }

  private:
    static constexpr std::size_t capacity = 50;

    struct Line {
        std::atomic<std::size_t> length = 0;
        std::array<char, 512> text{};
    };

    std::array<Line, capacity> lines;
    std::atomic<std::size_t> appended = 0;
};

/// Those of this process.
extern RecentLines recentLines;

} // namespace velloren
