#pragma once

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace velloren {

/// One end of a local socket, closed with it; the file of one that listens stays, as after a crash.
class Socket {
  public:
    Socket() : descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {}

    /// Listens at `path` for as long as it lives.
    Socket(const std::filesystem::path& path, int backlog) : Socket() {
        const sockaddr_un address = addressOf(path);
        EXPECT_EQ(bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0) << path;
        EXPECT_EQ(listen(descriptor, backlog), 0) << path;
    }

    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    ~Socket() { close(descriptor); }

    [[nodiscard]] Socket next() const { return Socket(accept(descriptor, nullptr, nullptr)); }

    [[nodiscard]] bool connectTo(const std::filesystem::path& path) const {
        const sockaddr_un address = addressOf(path);
        return connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    }

    void say(const std::string& text) const { send(descriptor, text.data(), text.size(), MSG_NOSIGNAL); }

    /// What comes next; empty when the other end closed instead.
    [[nodiscard]] std::string hear() const {
        std::array<char, 4096> buffer{};
        const ssize_t count = read(descriptor, buffer.data(), buffer.size());
        return count > 0 ? std::string(buffer.data(), std::size_t(count)) : std::string();
    }

  private:
    explicit Socket(int descriptor) : descriptor(descriptor) {}

    static sockaddr_un addressOf(const std::filesystem::path& path) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.string().copy(address.sun_path, sizeof address.sun_path - 1);
        return address;
    }

    int descriptor;
};

} // namespace velloren
