#include "CrashReporting/CrashHandler.h"

#include "CrashReporting/RecentLines.h"
#include "CrashReporting/StackModule.h"
#include "Platform/Foundation/FatalError.h"
#include "Platform/Foundation/StandardError.h"
#include "Platform/Foundation/UniqueDescriptor.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <cxxabi.h>
#include <exception>
#include <execinfo.h>
#include <fcntl.h>
#include <string_view>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <typeinfo>
#include <unistd.h>

namespace velloren {

namespace {

constexpr std::array fatalSignals{SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGSYS};
constexpr std::size_t stackOfHandler = std::size_t{1024} * 1024; // pages that nobody touches cost nothing
constexpr unsigned patience = 20;                                // seconds that the stack may take to read

// What the handler needs, made ready while the process is well. It may use snprintf: with texts and numbers
// the C library takes neither the heap nor a lock for it.
std::array<char, PATH_MAX> folderOfReports{};
std::array<char, 64> versionOfProgram{};
std::array<char, 4096> reason{};
std::atomic<pid_t> crashedThread = 0;

struct Crash {
    int signal;
    const siginfo_t* info;
    void* context;
    std::int64_t time; // seconds since 1970
};

void write(int report, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = ::write(report, text.data(), text.size());
        if (count <= 0)
            return;
        text.remove_prefix(std::size_t(count));
    }
}

/// As "2026-11-21T09:52:41Z", with `separator` in place of the colons.
std::array<char, 32> timeOf(const Crash& crash, char separator) {
    using namespace std::chrono;
    const sys_seconds time{seconds(crash.time)};
    const year_month_day day(floor<days>(time));
    const hh_mm_ss clock(time - floor<days>(time));
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d%c%02d%c%02dZ", int(day.year()),
                  unsigned(day.month()), unsigned(day.day()), int(clock.hours().count()), separator,
                  int(clock.minutes().count()), separator, int(clock.seconds().count()));
    return text;
}

void writeHead(int report, const Crash& crash) {
    std::array<char, 512> head{};
    std::snprintf(head.data(), head.size(),
                  "Velloren %s, crash report\nTime: %s\nProcess: %d, thread %d\nSignal: SIG%s (%d)",
                  versionOfProgram.data(), timeOf(crash, ':').data(), int(::getpid()), int(::gettid()),
                  ::sigabbrev_np(crash.signal), crash.signal);
    write(report, head.data());
    if (crash.info->si_code > 0) { // the kernel's own, not sent by a process
        std::snprintf(head.data(), head.size(), ", address 0x%llx",
                      static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(crash.info->si_addr)));
        write(report, head.data());
    }
    write(report, "\n");
    if (reason.front() != '\0') {
        write(report, "Reason: ");
        write(report, reason.data());
        write(report, "\n");
    }
}

/// In a process of its own: this takes the heap, which may be what is broken, or locked.
bool writeStackFromCopy(int report, const Crash& crash) {
    const pid_t copy = ::_Fork();
    if (copy == 0) {
        for (const int signal : fatalSignals)
            std::signal(signal, SIG_DFL);
        std::signal(SIGALRM, SIG_DFL);
        sigset_t none;
        sigemptyset(&none);
        ::sigprocmask(SIG_SETMASK, &none, nullptr);
        ::alarm(patience);
        ::_exit(writeStack(report, crash.context) ? EXIT_SUCCESS : EXIT_FAILURE);
    }
    int status = 0;
    while (copy > 0 && ::waitpid(copy, &status, 0) < 0 && errno == EINTR) {
    }
    return copy > 0 && WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS;
}

void writeStackAsAddresses(int report) {
    std::array<void*, 64> frames{};
    ::backtrace_symbols_fd(frames.data(), ::backtrace(frames.data(), int(frames.size())), report);
}

void writeReport(int report, const Crash& crash) {
    writeHead(report, crash);
    write(report, "\nStack:\n");
    if (!writeStackFromCopy(report, crash))
        writeStackAsAddresses(report);
    write(report, "\nLog:\n");
    recentLines.visit([report](std::string_view line) {
        write(report, line);
        write(report, "\n");
    });
}

void report(const Crash& crash) {
    if (folderOfReports.front() == '\0')
        return;
    std::array<char, PATH_MAX + 64> path{};
    std::snprintf(path.data(), path.size(), "%s/%s-%d.txt", folderOfReports.data(), timeOf(crash, '-').data(),
                  int(::getpid()));
    const UniqueDescriptor file(
        ::open(path.data(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!file)
        return;
    writeReport(file.get(), crash);
    writeToStandardError("The report of this crash is in ");
    writeToStandardError(path.data());
    writeToStandardError("\n");
}

void crashed(int signal, siginfo_t* info, void* context) {
    pid_t none = 0;
    if (!crashedThread.compare_exchange_strong(none, ::gettid())) {
        while (none != ::gettid()) // another thread was first, and will end the process
            ::pause();
    } else {
        report({signal, info, context, ::time(nullptr)});
    }
    std::signal(signal, SIG_DFL);
    // What faulted does so again when this returns; a signal that was sent has to be sent again.
    if (info->si_code <= 0)
        ::raise(signal);
}

void rememberFatalError(std::string_view message) {
    std::snprintf(reason.data(), reason.size(), "%.*s", int(message.size()), message.data());
}

[[noreturn]] void terminated() {
    if (const std::type_info* type = abi::__cxa_current_exception_type()) {
        int status = 0;
        char* demangled = abi::__cxa_demangle(type->name(), nullptr, nullptr, &status);
        const char* name = demangled ? demangled : type->name();
        try {
            throw;
        } catch (const std::exception& exception) {
            std::snprintf(reason.data(), reason.size(), "uncaught exception %s: %s", name, exception.what());
        } catch (...) {
            std::snprintf(reason.data(), reason.size(), "uncaught exception %s", name);
        }
        std::free(demangled);
    } else {
        std::snprintf(reason.data(), reason.size(), "terminated without an exception");
    }
    writeToStandardError(reason.data());
    writeToStandardError("\n");
    std::abort();
}

void prepareStackOfHandler() {
    void* memory =
        ::mmap(nullptr, stackOfHandler, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        return;
    const stack_t stack{memory, 0, stackOfHandler};
    ::sigaltstack(&stack, nullptr);
}

} // namespace

void installCrashHandler(const std::string& folder, const std::string& version) {
    std::snprintf(folderOfReports.data(), folderOfReports.size(), "%s", folder.c_str());
    std::snprintf(versionOfProgram.data(), versionOfProgram.size(), "%s", version.c_str());
    setFatalErrorObserver(rememberFatalError);
    std::set_terminate(terminated); // the one before would wait for standard error
    prepareStackOfHandler();
    std::array<void*, 1> first{};
    ::backtrace(first.data(), int(first.size())); // loads what it needs, which a handler must not

    struct sigaction action {};

    action.sa_sigaction = crashed;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigemptyset(&action.sa_mask);
    for (const int signal : fatalSignals)
        ::sigaction(signal, &action, nullptr);
}

} // namespace velloren
