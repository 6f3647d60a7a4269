#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

namespace velloren {

/// A child process, killed when its owner goes. Standard output and error go to one file.
class Process {
  public:
    using Environment = std::map<std::string, std::string>;

    /// Starts `arguments[0]`, found on the PATH, with `changes` to this process's environment; a variable
    /// with an empty value is taken away. Stops the test when it cannot be started.
    Process(const std::vector<std::string>& arguments, const Environment& changes,
            const std::filesystem::path& outputFile);
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    ~Process();

    [[nodiscard]] pid_t pid() const { return child; }

    [[nodiscard]] bool isRunning();
    /// What it wrote so far.
    [[nodiscard]] std::string output() const;

    void signal(int number) const;
    /// Waits for its end: the exit status, or 128 and the signal that ended it. Kills it after a generous
    /// limit.
    int wait();

  private:
    bool reap(int options);

    pid_t child = -1;
    bool ended = false;
    int status = 0;
    std::filesystem::path outputFile;
};

} // namespace velloren
