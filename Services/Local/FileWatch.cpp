#include "Services/Local/FileWatch.h"

#include "Platform/Foundation/RunLoop.h"

#include <array>
#include <cstdint>
#include <memory>
#include <sys/inotify.h>
#include <unistd.h>
#include <utility>

namespace velloren {

namespace {

constexpr std::uint32_t arrivals = IN_CREATE | IN_MOVED_TO;
constexpr std::uint32_t itself = IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
constexpr std::uint32_t files = arrivals | IN_MODIFY | IN_MOVED_FROM | IN_DELETE;

constexpr RunLoop::Seconds pause(0.25); // a synchronisation writes thousands of times

/// The folder of the file is watched, as long as there is none, the nearest one above it.
class FileWatch : public std::enable_shared_from_this<FileWatch> {
  public:
    FileWatch(std::filesystem::path file, std::string companion, std::function<void()> changed)
        : file(std::move(file)), companion(std::move(companion)), changed(std::move(changed)),
          descriptor(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
        if (descriptor < 0)
            return;
        follow();
        listen();
    }

    FileWatch(const FileWatch&) = delete;
    FileWatch& operator=(const FileWatch&) = delete;

    ~FileWatch() {
        events = {};
        if (descriptor >= 0)
            ::close(descriptor);
    }

  private:
    void follow() {
        const int former = folder;
        watchNearestFolder();
        if (awaited != file)
            watchNearestFolder(); // one further down may have come meanwhile
        if (former >= 0 && former != folder)
            ::inotify_rm_watch(descriptor, former);
    }

    void watchNearestFolder() {
        folder = -1;
        for (awaited = file; folder < 0 && awaited.has_relative_path(); awaited = awaited.parent_path()) {
            const std::uint32_t events = itself | (awaited == file ? files : arrivals);
            folder = ::inotify_add_watch(descriptor, awaited.parent_path().c_str(), events);
            if (folder >= 0)
                return;
        }
    }

    void listen() {
        events = RunLoop::main().watch(descriptor, [this] { hear(); });
    }

    void hear() {
        events = {};
        RunLoop::main().postAfter(pause, [weak = weak_from_this()] {
            if (const auto watch = weak.lock())
                watch->listen();
        });
        if (!readEvents())
            return;
        follow();
        changed();
    }

    /// Whether one of them concerns the file.
    bool readEvents() {
        bool concerned = false;
        alignas(inotify_event) std::array<char, 4096> buffer{};
        for (;;) {
            const ssize_t size = ::read(descriptor, buffer.data(), buffer.size());
            if (size <= 0)
                break;
            for (const char* next = buffer.data(); next < buffer.data() + size;) {
                const auto& event = *reinterpret_cast<const inotify_event*>(next);
                concerned = concerned || concerns(event);
                next += sizeof event + event.len;
            }
        }
        return concerned;
    }

    [[nodiscard]] bool concerns(const inotify_event& event) const {
        if (event.mask & IN_Q_OVERFLOW)
            return true;
        if (event.wd != folder)
            return false;
        const std::string name = event.len > 0 ? event.name : "";
        return name.empty() || name == awaited.filename() || (name == companion && event.mask & IN_MODIFY);
    }

    const std::filesystem::path file;
    const std::string companion;
    const std::function<void()> changed;
    const int descriptor;
    int folder = -1;               ///< the number of its watch
    std::filesystem::path awaited; ///< in that folder: the file, or the next folder on the way to it
    Subscription events;
};

} // namespace

Subscription watchFile(const std::filesystem::path& file, const std::string& companion,
                       std::function<void()> changed) {
    const auto watch = std::make_shared<FileWatch>(file, companion, std::move(changed));
    return Subscription([watch] {});
}

} // namespace velloren
