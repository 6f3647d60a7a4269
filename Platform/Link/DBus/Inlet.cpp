#include "Platform/Link/DBus/Inlet.h"

#include <systemd/sd-event.h>

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace velloren {

namespace {

constexpr std::size_t pieceLength = 65536;

void closeIfOpen(int& descriptor) {
    if (descriptor >= 0)
        close(std::exchange(descriptor, -1));
}

} // namespace

std::unique_ptr<Inlet> Inlet::of(sd_event* loop, int peer) {
    std::unique_ptr<Inlet> inlet(new Inlet);
    std::array<int, 2> ends{};
    inlet->peer = fcntl(peer, F_DUPFD_CLOEXEC, 3);
    if (inlet->peer < 0 ||
        socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()) != 0)
        return nullptr;
    inlet->readingEnd = ends[0];
    inlet->writingEnd = ends[1];
    sd_event_source* arrival = nullptr;
    sd_event_source* room = nullptr;
    if (sd_event_add_io(loop, &arrival, inlet->peer, EPOLLIN, &Inlet::arrived, inlet.get()) < 0)
        return nullptr;
    inlet->arrival.reset(arrival);
    if (sd_event_add_io(loop, &room, inlet->writingEnd, EPOLLOUT, &Inlet::hasRoom, inlet.get()) < 0)
        return nullptr;
    inlet->room.reset(room);
    return sd_event_source_set_enabled(room, SD_EVENT_OFF) < 0 ? nullptr : std::move(inlet);
}

Inlet::~Inlet() {
    arrival.reset();
    room.reset();
    for (int* descriptor : {&peer, &readingEnd, &writingEnd})
        closeIfOpen(*descriptor);
}

int Inlet::takeReadingEnd() {
    return std::exchange(readingEnd, -1);
}

int Inlet::arrived(sd_event_source*, int, std::uint32_t, void* self) {
    static_cast<Inlet*>(self)->read();
    return 0;
}

int Inlet::hasRoom(sd_event_source*, int, std::uint32_t, void* self) {
    static_cast<Inlet*>(self)->handOn();
    return 0;
}

void Inlet::read() {
    std::array<char, pieceLength> piece; // NOLINT(cppcoreguidelines-pro-type-member-init): read into
    const ssize_t count = recv(peer, piece.data(), piece.size(), MSG_DONTWAIT);
    if (count < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    hasEnded = count <= 0 || !sieve.add({piece.data(), std::size_t(count)}, waiting);
    handOn();
}

void Inlet::handOn() {
    while (!waiting.empty()) {
        const ssize_t count = send(writingEnd, waiting.data(), waiting.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count < 0 && errno != EAGAIN && errno != EINTR) {
            waiting.clear(); // nobody reads any more
            hasEnded = true;
        }
        if (count < 0)
            break;
        waiting.erase(0, std::size_t(count));
    }
    const bool isFull = !waiting.empty();
    sd_event_source_set_enabled(room.get(), isFull ? SD_EVENT_ON : SD_EVENT_OFF);
    sd_event_source_set_enabled(arrival.get(), isFull || hasEnded ? SD_EVENT_OFF : SD_EVENT_ON);
    if (hasEnded && !isFull) {
        room.reset();
        closeIfOpen(writingEnd);
    }
}

} // namespace velloren
