#include "Platform/Link/DBus/MessageSieve.h"

#include <algorithm>
#include <cstdint>

namespace velloren {

namespace {

constexpr std::size_t startLength = 16; // bytes of a message up to its header's fields
constexpr std::size_t bodyLengthAt = 4;
constexpr std::size_t fieldsLengthAt = 12;
constexpr std::size_t longestCharacter = 4;

std::uint8_t byteOf(std::string_view text, std::size_t index) {
    return static_cast<std::uint8_t>(text[index]);
}

std::size_t numberAt(std::string_view header, std::size_t place) {
    std::size_t number = 0;
    for (std::size_t index = 0; index < 4; ++index) {
        const std::size_t next = header.front() == 'B' ? place + index : place + 3 - index;
        number = number << 8U | byteOf(header, next);
    }
    return number;
}

/// U+FDD0 to U+FDEF, and the last two code points of every plane.
bool isNoncharacter(std::string_view text) {
    const std::uint8_t lead = byteOf(text, 0);
    if (lead == 0xEF && text.size() >= 3) {
        const std::uint8_t second = byteOf(text, 1);
        const std::uint8_t third = byteOf(text, 2);
        return (second == 0xB7 && third >= 0x90 && third <= 0xAF) ||
               (second == 0xBF && (third == 0xBE || third == 0xBF));
    }
    return lead >= 0xF0 && lead <= 0xF4 && text.size() >= longestCharacter &&
           (byteOf(text, 1) & 0x0FU) == 0x0F && byteOf(text, 2) == 0xBF && byteOf(text, 3) >= 0xBE;
}

void replaceNoncharacters(std::string& text) {
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (byteOf(text, index) < 0xEF || !isNoncharacter(std::string_view(text).substr(index)))
            continue;
        if (byteOf(text, index) == 0xEF)
            text.replace(index, 3, "\xEF\xBF\xBD");
        else
            text[index + 3] = '\xBD'; // in its plane, the one before the noncharacters
    }
}

} // namespace

bool MessageSieve::add(std::string_view piece, std::string& fit) {
    while (!piece.empty() && !isBroken)
        piece.remove_prefix(take(piece, fit));
    return !isBroken;
}

std::size_t MessageSieve::take(std::string_view piece, std::string& fit) {
    const std::size_t length = std::min(left, piece.size());
    switch (state) {
    case State::Handshake:
    case State::LineOfHandshake:
        return takeLine(piece, fit);
    case State::Start:
        return takeStart(piece, fit);
    case State::Body:
        return takeBody(piece, fit);
    case State::Header:
        fit += piece.substr(0, length);
        enter(State::Header, left - length);
        return length;
    case State::OversizedBody:
        enter(State::OversizedBody, left - length);
        return length;
    }
    return piece.size();
}

std::size_t MessageSieve::takeLine(std::string_view piece, std::string& fit) {
    // No line of the handshake starts like that, and every message does.
    if (state == State::Handshake && (piece.front() == 'l' || piece.front() == 'B')) {
        enter(State::Start, startLength);
        return 0;
    }
    const std::size_t end = piece.find('\n');
    state = end == std::string_view::npos ? State::LineOfHandshake : State::Handshake;
    const std::size_t length = std::min(piece.size(), end == std::string_view::npos ? end : end + 1);
    fit += piece.substr(0, length);
    return length;
}

std::size_t MessageSieve::takeStart(std::string_view piece, std::string& fit) {
    const std::size_t length = std::min(left, piece.size());
    held += piece.substr(0, length);
    left -= length;
    if (left > 0)
        return length;
    bodyLength = numberAt(held, bodyLengthAt);
    const std::size_t fieldsLength = numberAt(held, fieldsLengthAt);
    isBroken = fieldsLength > largestHeader;
    isOversized = bodyLength > largestBody;
    if (isOversized)
        held.replace(bodyLengthAt, 4, 4, '\0');
    fit += held;
    held.clear();
    enter(State::Header, (fieldsLength + 7) / 8 * 8);
    return length;
}

std::size_t MessageSieve::takeBody(std::string_view piece, std::string& fit) {
    const std::size_t length = std::min(left, piece.size());
    held += piece.substr(0, length);
    replaceNoncharacters(held);
    // A character may go on in the next piece.
    const std::size_t kept = length == left ? 0 : std::min(held.size(), longestCharacter - 1);
    fit.append(held, 0, held.size() - kept);
    held.erase(0, held.size() - kept);
    enter(State::Body, left - length);
    return length;
}

void MessageSieve::enter(State next, std::size_t length) {
    if (length == 0 && next == State::Header)
        return enter(isOversized ? State::OversizedBody : State::Body, bodyLength);
    if (length == 0)
        return enter(State::Start, startLength);
    state = next;
    left = length;
}

} // namespace velloren
