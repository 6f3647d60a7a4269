#include "Tests/Support/Process.h"

#include "Platform/Foundation/FatalError.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace velloren {

namespace {

[[noreturn]] void becomeProgram(const std::vector<std::string>& arguments,
                                const Process::Environment& changes,
                                const std::filesystem::path& outputFile) {
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    const int output = open(outputFile.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
    for (const auto& [name, value] : changes)
        value.empty() ? unsetenv(name.c_str()) : setenv(name.c_str(), value.c_str(), 1);
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (const std::string& argument : arguments)
        pointers.push_back(const_cast<char*>(argument.c_str()));
    pointers.push_back(nullptr);
    execvp(pointers[0], pointers.data());
    _exit(127);
}

} // namespace

Process::Process(const std::vector<std::string>& arguments, const Environment& changes,
                 const std::filesystem::path& outputFile)
    : outputFile(outputFile) {
    child = fork();
    if (child < 0)
        fatalError("no process could be started");
    if (child == 0)
        becomeProgram(arguments, changes, outputFile);
}

Process::~Process() {
    if (isRunning()) {
        kill(child, SIGKILL);
        wait();
    }
}

bool Process::reap(int options) {
    if (!ended && waitpid(child, &status, options) == child)
        ended = true;
    return ended;
}

bool Process::isRunning() {
    return !reap(WNOHANG);
}

std::string Process::output() const {
    std::ostringstream text;
    text << std::ifstream(outputFile).rdbuf();
    return text.str();
}

void Process::signal(int number) const {
    if (!ended)
        kill(child, number);
}

int Process::wait() {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!reap(WNOHANG)) {
        if (std::chrono::steady_clock::now() > limit)
            kill(child, SIGKILL);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

} // namespace velloren
