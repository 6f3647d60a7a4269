#pragma once

#include <QPoint>

#include <cstdint>

namespace velloren {

/// The kinds of event that views and monitors are told of.
enum class EventType : std::uint8_t { LeftMouseDown = 2, RightMouseDown = 4, OtherMouseDown = 25 };

/// A set of event types: bit n stands for the type of value n.
using EventMask = std::uint64_t;

constexpr EventMask maskOf(EventType type) {
    return EventMask{1} << static_cast<unsigned>(type);
}

/// One event of the pointer.
struct Event {
    EventType type = EventType::LeftMouseDown;
    QPoint position; ///< on the screen, in Qt's device-independent pixels
};

} // namespace velloren
