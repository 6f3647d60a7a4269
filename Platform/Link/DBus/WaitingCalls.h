#pragma once

#include "Platform/Link/Link.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace velloren {

/// One call to an object at the far end of a connection.
struct OutgoingCall {
    enum class Kind { Question, Request, Notice };

    Kind kind;
    std::string service; ///< empty for an endpoint
    std::string objectPath;
    std::string interface;
    std::string method;
    Channel::Arguments arguments;
    Channel::Reply reply;            ///< of a question
    Connection::ErrorHandler failed; ///< may be none
};

/// The calls of a connection that were not handed to its far end, in order. Any thread: a call is either
/// handed over or taken out, never both.
class WaitingCalls {
  public:
    static constexpr std::size_t mostQuestions = 64;

    /// What no longer has room: the oldest question, when there are too many.
    [[nodiscard]] std::optional<OutgoingCall> add(OutgoingCall call);

    /// Forgets the oldest call once `handOver` is done with it; whether it was.
    bool handOverFirst(const std::function<bool(const OutgoingCall&)>& handOver);

    [[nodiscard]] std::vector<OutgoingCall> takeRequests();
    /// Questions and notices.
    [[nodiscard]] std::vector<OutgoingCall> takeOthers();
    [[nodiscard]] bool empty() const;

  private:
    [[nodiscard]] std::vector<OutgoingCall> take(bool (*isWanted)(const OutgoingCall&));

    mutable std::mutex mutex;
    std::deque<OutgoingCall> calls;
};

} // namespace velloren
