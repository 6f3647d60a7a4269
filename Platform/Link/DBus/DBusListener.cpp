#include "Platform/Link/DBus/DBusListener.h"

#include "Platform/Foundation/Directories.h"
#include "Platform/Foundation/RunLoop.h"
#include "Platform/Link/DBus/DBusExport.h"
#include "Platform/Link/DBus/DBusWire.h"
#include "Platform/Link/DBus/LocalSocket.h"

#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <map>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace velloren {

namespace {

constexpr int backlog = 16;
constexpr std::size_t mostConnections = 32;
constexpr std::uint64_t pauseLength = 500000; // microseconds

/// Creates the folder for the user alone, or finds it to be just that.
bool makePrivateFolder(const std::filesystem::path& folder) {
    struct stat status {};

    if (mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST)
        return false;
    return lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == geteuid() &&
           (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
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
    static std::atomic<int> made = 0;
    return folder / ("endpoint-" + std::to_string(getpid()) + "-" + std::to_string(++made) + ".socket");
}

/// A listening socket at the path; negative when there cannot be one.
int listeningSocket(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string unfinished = path + ".new";
    if (unfinished.size() >= sizeof address.sun_path)
        return -1;
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (descriptor < 0)
        return -1;
    unlink(unfinished.c_str()); // left behind by an earlier process of this number
    std::memcpy(address.sun_path, unfinished.c_str(), unfinished.size() + 1);
    if (bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
        listen(descriptor, backlog) == 0 && rename(unfinished.c_str(), path.c_str()) == 0)
        return descriptor;
    close(descriptor);
    return -1;
}

class AcceptedConnection final : public IncomingConnection {
  public:
    void setExportedInterface(ExportedInterface interface) override { exported = std::move(interface); }

    std::optional<ExportedInterface> exported;
};

} // namespace

/// What the main thread knows of the listener.
struct DBusListener::Door {
    DBusListener* listener;
    ListenerDelegate* delegate = nullptr;
};

/// The listening socket and the connections it led to, on the link's thread.
class DBusListener::Server : public std::enable_shared_from_this<Server> {
  public:
    Server(LinkThread& thread, RunLoop& mainLoop, int descriptor, std::weak_ptr<Door> door)
        : thread(thread), mainLoop(mainLoop), descriptor(descriptor), door(std::move(door)) {}

    ~Server() {
        if (descriptor >= 0)
            ::close(descriptor);
    }

    void start() {
        sd_event_source* source = nullptr;
        const auto arrived = [](sd_event_source*, int, std::uint32_t, void* self) {
            static_cast<Server*>(self)->accept();
            return 0;
        };
        sd_event_add_io(thread.loop(), &source, descriptor, EPOLLIN, arrived, this);
        arrival.reset(source);
    }

    void close() {
        arrival.reset();
        pause.reset();
        peers.clear();
        ::close(std::exchange(descriptor, -1));
    }

  private:
    struct Peer {
        Peer(Server& server, std::uint64_t number) : server(server), number(number) {}

        Peer(const Peer&) = delete;
        Peer& operator=(const Peer&) = delete;

        ~Peer() {
            exported.reset();
            sd_bus_close_unref(bus);
            if (descriptor >= 0)
                ::close(descriptor);
        }

        Server& server;
        std::uint64_t number;
        int descriptor = -1; ///< until the bus takes it over
        sd_bus* bus = nullptr;
        std::shared_ptr<DBusExport> exported;
    };

    void accept() {
        const int accepted = accept4(descriptor, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
        if (accepted < 0 && (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM))
            pauseAccepting();
        if (accepted < 0)
            return;
        if (!peerIsSameUser(accepted) || peers.size() >= mostConnections) {
            ::close(accepted);
            return;
        }
        const std::uint64_t number = ++latest;
        peers.emplace(number, std::make_unique<Peer>(*this, number)).first->second->descriptor = accepted;
        mainLoop.post([server = shared_from_this(), door = door, number] {
            server->letDelegateDecide(door.lock(), number);
        });
    }

    /// Whoever knocks while descriptors are short would otherwise be reported again and again at once.
    void pauseAccepting() {
        const auto over = [](sd_event_source*, std::uint64_t, void* self) {
            sd_event_source_set_enabled(static_cast<Server*>(self)->arrival.get(), SD_EVENT_ON);
            return 0;
        };
        sd_event_source* source = nullptr;
        if (sd_event_add_time_relative(thread.loop(), &source, CLOCK_MONOTONIC, pauseLength, 0, over, this) <
            0)
            return;
        pause.reset(source);
        sd_event_source_set_enabled(arrival.get(), SD_EVENT_OFF);
    }

    /// On the main thread.
    void letDelegateDecide(const std::shared_ptr<Door>& open, std::uint64_t number) {
        AcceptedConnection connection;
        const bool accepted = open && open->delegate &&
                              open->delegate->listenerShouldAcceptNewConnection(*open->listener, connection);
        thread.post(
            [server = shared_from_this(), number, accepted, exported = std::move(connection.exported)] {
                if (accepted)
                    server->serve(number, exported);
                else
                    server->peers.erase(number);
            });
    }

    void serve(std::uint64_t number, const std::optional<ExportedInterface>& exported) {
        const auto found = peers.find(number);
        if (found == peers.end())
            return;
        Peer& peer = *found->second;
        if (!startBus(peer)) {
            peers.erase(found);
            return;
        }
        if (!exported)
            return;
        peer.exported = DBusExport::serve(
            peer.bus, *exported, [&loop = mainLoop](auto task) { loop.post(std::move(task)); },
            [&thread = thread](auto task) { thread.post(std::move(task)); });
    }

    [[nodiscard]] bool startBus(Peer& peer) const {
        sd_id128_t identity;
        if (sd_bus_new(&peer.bus) < 0 || sd_bus_set_fd(peer.bus, peer.descriptor, peer.descriptor) < 0)
            return false;
        peer.descriptor = -1;
        return sd_id128_randomize(&identity) >= 0 && sd_bus_set_server(peer.bus, 1, identity) >= 0 &&
               sd_bus_set_connected_signal(peer.bus, 1) >= 0 && sd_bus_start(peer.bus) >= 0 &&
               sd_bus_add_filter(peer.bus, nullptr, &Server::received, &peer) >= 0 &&
               sd_bus_attach_event(peer.bus, thread.loop(), SD_EVENT_PRIORITY_NORMAL) >= 0;
    }

    static int received(sd_bus_message* message, void* data, sd_bus_error*) {
        const Peer& peer = *static_cast<Peer*>(data);
        const auto later = [&peer](void (Server::*what)(std::uint64_t)) {
            peer.server.thread.post([server = peer.server.shared_from_this(), what, number = peer.number] {
                (*server.*what)(number);
            });
        };
        if (wire::isLocalSignal(*message, "Connected"))
            later(&Server::readOn);
        else if (wire::isLocalSignal(*message, "Disconnected"))
            later(&Server::forget);
        return 0;
    }

    /// Calls that came together with the last word of the authentication have been read from the socket
    /// already: nothing would tell of them before more arrives.
    void readOn(std::uint64_t number) {
        const auto found = peers.find(number);
        if (found != peers.end() && sd_bus_process(found->second->bus, nullptr) > 0)
            thread.post([self = shared_from_this(), number] { self->readOn(number); });
    }

    void forget(std::uint64_t number) { peers.erase(number); }

    LinkThread& thread;
    RunLoop& mainLoop;
    int descriptor;
    std::weak_ptr<Door> door;
    wire::EventSource arrival;
    wire::EventSource pause;
    std::map<std::uint64_t, std::unique_ptr<Peer>> peers;
    std::uint64_t latest = 0;
};

DBusListener::DBusListener(LinkThread& thread) : thread(thread), door(std::make_shared<Door>(Door{this})) {}

DBusListener::~DBusListener() {
    if (!server)
        return;
    unlink(socketPath.c_str());
    thread.post([server = server] { server->close(); });
}

void DBusListener::setDelegate(ListenerDelegate* delegate) {
    door->delegate = delegate;
}

void DBusListener::resume() {
    const auto folder = directories::runtime();
    if (server || !folder || !makePrivateFolder(*folder))
        return;
    socketPath = freshSocketPath(*folder);
    ownEndpoint = Endpoint::ofSocketPath(socketPath);
    const int descriptor = ownEndpoint ? listeningSocket(socketPath) : -1;
    if (descriptor < 0) {
        ownEndpoint.reset();
        return;
    }
    server = std::make_shared<Server>(thread, RunLoop::main(), descriptor, door);
    thread.post([server = server, folder = *folder] {
        server->start();
        sweepAbandonedSockets(folder);
    });
}

} // namespace velloren
