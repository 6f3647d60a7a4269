#pragma once

#include <gtest/gtest.h>

#include <csignal>
#include <functional>
#include <memory>
#include <sys/wait.h>
#include <unistd.h>

namespace velloren {

/// Another process, killed when this goes, that holds a lock until then.
class LockHolder {
  public:
    /// `acquire` runs in the other process; what it returns is the lock, or nothing where there is none. It
    /// has returned when this is made.
    explicit LockHolder(const std::function<std::shared_ptr<void>()>& acquire) {
        int pipe[2] = {-1, -1};
        EXPECT_EQ(::pipe(pipe), 0);
        process = ::fork();
        if (process == 0) {
            const auto lock = acquire();
            const char held = lock ? 'y' : 'n';
            if (::write(pipe[1], &held, 1) == 1)
                ::sleep(8); // less than SQLite waits for a lock of its own: who waited that long would get it
            ::_exit(1);
        }
        char held = 'n';
        EXPECT_EQ(::read(pipe[0], &held, 1), 1);
        EXPECT_EQ(held, 'y');
        ::close(pipe[0]);
        ::close(pipe[1]);
    }

    LockHolder(const LockHolder&) = delete;
    LockHolder& operator=(const LockHolder&) = delete;

    ~LockHolder() {
        ::kill(process, SIGKILL);
        ::waitpid(process, nullptr, 0);
    }

  private:
    pid_t process = -1;
};

} // namespace velloren
