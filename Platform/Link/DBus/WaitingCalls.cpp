#include "Platform/Link/DBus/WaitingCalls.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace velloren {

namespace {

using Kind = OutgoingCall::Kind;

bool isRequest(const OutgoingCall& call) {
    return call.kind == Kind::Request;
}

bool isOther(const OutgoingCall& call) {
    return call.kind != Kind::Request;
}

} // namespace

std::optional<OutgoingCall> WaitingCalls::add(OutgoingCall call) {
    const std::scoped_lock lock(mutex);
    calls.push_back(std::move(call));
    const auto isQuestion = [](const OutgoingCall& one) { return one.kind == Kind::Question; };
    if (std::size_t(std::count_if(calls.begin(), calls.end(), isQuestion)) <= mostQuestions)
        return std::nullopt;
    const auto oldest = std::find_if(calls.begin(), calls.end(), isQuestion);
    OutgoingCall tooMany = std::move(*oldest);
    calls.erase(oldest);
    return tooMany;
}

bool WaitingCalls::handOverFirst(const std::function<bool(const OutgoingCall&)>& handOver) {
    const std::scoped_lock lock(mutex);
    if (calls.empty() || !handOver(calls.front()))
        return false;
    calls.pop_front();
    return true;
}

std::vector<OutgoingCall> WaitingCalls::takeRequests() {
    return take(isRequest);
}

std::vector<OutgoingCall> WaitingCalls::takeOthers() {
    return take(isOther);
}

std::vector<OutgoingCall> WaitingCalls::take(bool (*isWanted)(const OutgoingCall&)) {
    const std::scoped_lock lock(mutex);
    const auto wanted = std::stable_partition(calls.begin(), calls.end(), std::not_fn(isWanted));
    std::vector<OutgoingCall> taken(std::make_move_iterator(wanted), std::make_move_iterator(calls.end()));
    calls.erase(wanted, calls.end());
    return taken;
}

bool WaitingCalls::empty() const {
    const std::scoped_lock lock(mutex);
    return calls.empty();
}

} // namespace velloren
