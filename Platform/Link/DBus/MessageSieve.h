#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace velloren {

/// Makes what a peer sends fit for sd-bus, piece by piece as it arrives: a message with a body beyond the
/// limit goes on without its body, and characters that D-Bus allows in a text and sd-bus refuses
/// (noncharacters) become replacement characters of the same length.
class MessageSieve {
  public:
    static constexpr std::size_t largestBody = std::size_t(16) << 20U;
    static constexpr std::size_t largestHeader = std::size_t(64) << 10U;

    /// Appends to `fit` what of the stream can go on. False when the peer breaks the rules for good.
    [[nodiscard]] bool add(std::string_view piece, std::string& fit);

  private:
    enum class State { Handshake, LineOfHandshake, Start, Header, Body, OversizedBody };

    std::size_t take(std::string_view piece, std::string& fit);
    std::size_t takeLine(std::string_view piece, std::string& fit);
    std::size_t takeStart(std::string_view piece, std::string& fit);
    std::size_t takeBody(std::string_view piece, std::string& fit);
    void enter(State next, std::size_t length);

    State state = State::Handshake;
    std::size_t left = 0;       ///< bytes of the present part that are still to come
    std::size_t bodyLength = 0; ///< of the message whose header passes
    bool isOversized = false;
    std::string held; ///< the beginning of a header, or the end of what came of a body
    bool isBroken = false;
};

} // namespace velloren
