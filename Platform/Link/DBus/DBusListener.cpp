#include "Platform/Link/DBus/DBusListener.h"

#include "Platform/Foundation/Directories.h"
#include "Platform/Foundation/RunLoop.h"
#include "Platform/Foundation/StandardError.h"
#include "Platform/Link/DBus/DBusPeer.h"
#include "Platform/Link/DBus/LocalSocket.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <system_error>
#include <utility>

namespace velloren {

namespace {

constexpr int backlog = 16;
constexpr std::size_t mostConnections = 32;
constexpr RunLoop::Seconds pauseLength{0.5};

void say(const std::string& text) {
    writeToStandardError("velloren: " + text + "\n");
}

/// Creates the folder for the user alone, or makes the user's one be that.
bool makePrivateFolder(const std::filesystem::path& folder) {
    if (mkdir(folder.c_str(), S_IRWXU) != 0 && errno != EEXIST)
        return false;
    const UniqueDescriptor opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));

    struct stat status {};

    if (!opened || fstat(opened.get(), &status) != 0 || status.st_uid != geteuid())
        return false;
    if ((status.st_mode & (S_IRWXG | S_IRWXO)) == 0)
        return true;
    say(folder.string() + " was open to others, and is so no more");
    return fchmod(opened.get(), S_IRWXU) == 0;
}

/// Removes what processes that were killed left behind. Whoever listens has a socket file of that name only
/// once it does.
void sweepAbandonedSockets(const std::filesystem::path& folder) {
    std::error_code trouble;
    for (std::filesystem::directory_iterator entry(folder, trouble), end; !trouble && entry != end;
         entry.increment(trouble)) {
        const std::string name = entry->path().filename();
        if (!name.starts_with("endpoint-") || !name.ends_with(".socket"))
            continue;
        std::error_code unknown;
        const auto endpoint = Endpoint::ofSocketPath(entry->path().string());
        if (entry->symlink_status(unknown).type() == std::filesystem::file_type::socket && endpoint &&
            !isListening(*endpoint))
            unlink(entry->path().c_str());
    }
}

std::string freshSocketPath(const std::filesystem::path& folder) {
    static int made = 0;
    return folder / ("endpoint-" + std::to_string(getpid()) + "-" + std::to_string(++made) + ".socket");
}

/// A listening socket at the path; none when there cannot be one.
UniqueDescriptor listeningSocket(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string unfinished = path + ".new";
    if (unfinished.size() >= sizeof address.sun_path) {
        errno = ENAMETOOLONG;
        return {};
    }
    UniqueDescriptor descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    unlink(unfinished.c_str()); // left behind by an earlier process of this number
    std::memcpy(address.sun_path, unfinished.c_str(), unfinished.size() + 1);
    if (bind(descriptor.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
        listen(descriptor.get(), backlog) == 0 && rename(unfinished.c_str(), path.c_str()) == 0)
        return descriptor;
    return {};
}

class AcceptedConnection final : public IncomingConnection {
  public:
    void setExportedInterface(ExportedInterface interface) override { exported = std::move(interface); }

    std::optional<ExportedInterface> exported;
};

} // namespace

DBusListener::DBusListener(BusLoop& loop) : loop(loop) {}

DBusListener::~DBusListener() {
    if (ownEndpoint)
        unlink(ownEndpoint->socketName().c_str());
}

void DBusListener::resume() {
    const auto folder = directories::runtime();
    if (socket || !folder)
        return;
    if (makePrivateFolder(*folder)) {
        const std::string path = freshSocketPath(*folder);
        socket = listeningSocket(path);
        ownEndpoint = socket ? Endpoint::ofSocketPath(path) : std::nullopt;
    }
    if (!ownEndpoint)
        return say("no socket can be had in " + folder->string() + ": " + std::strerror(errno));
    followArrivals();
    sweepAbandonedSockets(*folder);
}

void DBusListener::followArrivals() {
    arrivals = RunLoop::main().watch(socket.get(), [this] { accept(); });
}

void DBusListener::accept() {
    UniqueDescriptor accepted(accept4(socket.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!accepted && (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM))
        pause();
    if (!accepted || !peerIsSameUser(accepted.get()) || peers.size() >= mostConnections)
        return;
    AcceptedConnection connection;
    if (!delegate || !delegate->listenerShouldAcceptNewConnection(*this, connection))
        return;
    const std::uint64_t number = ++latest;
    auto peer = DBusPeer::serve(loop, std::move(accepted), std::move(connection.exported),
                                [this, number] { peers.erase(number); });
    if (peer)
        peers.emplace(number, std::move(peer));
}

/// Whoever knocks while descriptors are short would otherwise be reported again and again at once.
void DBusListener::pause() {
    arrivals = {};
    RunLoop::main().postAfter(pauseLength, [this, weak = std::weak_ptr(alive)] {
        if (!weak.expired())
            followArrivals();
    });
}

} // namespace velloren
