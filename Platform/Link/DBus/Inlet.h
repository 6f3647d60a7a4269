#pragma once

#include "Platform/Link/DBus/DBusWire.h"
#include "Platform/Link/DBus/MessageSieve.h"

#include <cstdint>
#include <memory>
#include <string>

struct sd_event;

namespace velloren {

/// Reads what a peer sends and hands it on, sieved, through a socket that sd-bus reads in the peer's place.
/// Lives on the loop's thread.
class Inlet {
  public:
    /// None when there are too few descriptors. `peer` stays the caller's.
    [[nodiscard]] static std::unique_ptr<Inlet> of(sd_event* loop, int peer);

    Inlet(const Inlet&) = delete;
    Inlet& operator=(const Inlet&) = delete;
    ~Inlet();

    /// The socket to read from instead; the caller's to close from here on.
    [[nodiscard]] int takeReadingEnd();

  private:
    Inlet() = default;

    static int arrived(sd_event_source*, int, std::uint32_t, void* self);
    static int hasRoom(sd_event_source*, int, std::uint32_t, void* self);
    void read();
    void handOn();

    int peer = -1;
    int readingEnd = -1;
    int writingEnd = -1;
    wire::EventSource arrival;
    wire::EventSource room;
    MessageSieve sieve;
    std::string waiting; ///< sieved, and not yet read at the other end
    bool hasEnded = false;
};

} // namespace velloren
