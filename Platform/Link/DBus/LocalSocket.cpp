#include "Platform/Link/DBus/LocalSocket.h"

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <utility>

namespace velloren {

namespace {

/// The socket, and what connect(2) said of it: 0 or the error.
struct Attempt {
    UniqueDescriptor descriptor;
    int error;
};

Attempt attempt(const Endpoint& endpoint) {
    UniqueDescriptor descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!descriptor)
        return {{}, errno};
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string& name = endpoint.socketName();
    std::memcpy(address.sun_path, name.data(), name.size());
    // A path ends with a NUL; an abstract name is exactly as long as it is.
    const bool isPath = name.front() != '\0';
    const auto length = socklen_t(offsetof(sockaddr_un, sun_path) + name.size() + (isPath ? 1 : 0));
    const bool connected =
        connect(descriptor.get(), reinterpret_cast<const sockaddr*>(&address), length) == 0;
    return {std::move(descriptor), connected ? 0 : errno};
}

/// Whether the error may be gone a little later: the listener's queue of connections is full, or something of
/// this process's or of the system's is short.
bool mayPass(int error) {
    return error == EAGAIN || error == EINTR || error == EMFILE || error == ENFILE || error == ENOBUFS ||
           error == ENOMEM;
}

} // namespace

Reached reach(const Endpoint& endpoint) {
    auto [descriptor, error] = attempt(endpoint);
    if (error == 0 && peerIsSameUser(descriptor.get()))
        return {Reached::Who::Listener, std::move(descriptor)};
    return {mayPass(error) ? Reached::Who::BusyListener : Reached::Who::Nobody, {}};
}

bool isListening(const Endpoint& endpoint) {
    const int error = attempt(endpoint).error;
    return error == 0 || mayPass(error);
}

bool peerIsSameUser(int descriptor) {
    ucred credentials{};
    socklen_t size = sizeof credentials;
    return getsockopt(descriptor, SOL_SOCKET, SO_PEERCRED, &credentials, &size) == 0 &&
           credentials.uid == geteuid();
}

} // namespace velloren
