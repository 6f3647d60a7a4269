#include "CrashReporting/CrashHandler.h"

#include "CrashReporting/CrashFolder.h"
#include "CrashReporting/FixedText.h"
#include "CrashReporting/RecentLines.h"
#include "CrashReporting/StackModule.h"
#include "Platform/Foundation/FatalError.h"
#include "Platform/Foundation/StandardError.h"
#include "Platform/Foundation/UniqueDescriptor.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <cxxabi.h>
#include <exception>
#include <execinfo.h>
#include <fcntl.h>
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

// What the handler needs, made ready while the process is well.
FixedText folderOfReports;
FixedText versionOfProgram;
FixedText reason;
std::atomic<pid_t> crashedThread = 0;

struct Crash {
    int signal;
    const siginfo_t* info;
    void* context;
    std::int64_t time; // seconds since 1970
};

FixedText pathOfReport(const Crash& crash) {
    FixedText path;
    path << folderOfReports.view() << "/";
    path.appendTime(crash.time, '-') << "-" << std::uint64_t(::getpid()) << ".txt";
    return path;
}

void writeHead(int report, const Crash& crash) {
    FixedText head;
    head << "Velloren " << versionOfProgram.view() << ", crash report\nTime: ";
    head.appendTime(crash.time) << "\nProcess: " << std::uint64_t(::getpid()) << ", thread "
                                << std::uint64_t(::gettid()) << "\nSignal: SIG"
                                << ::sigabbrev_np(crash.signal) << " (" << std::uint64_t(crash.signal) << ")";
    if (crash.info->si_code > 0) { // the kernel's own, not sent by a process
        head << ", address ";
        head.appendAddress(reinterpret_cast<std::uintptr_t>(crash.info->si_addr));
    }
    head << "\n";
    if (!reason.view().empty())
        head << "Reason: " << reason.view() << "\n";
    head.writeTo(report);
}

/// In a process of its own: this takes the heap, which may be what is broken, or locked.
bool tidyUpAndWriteStackFromCopy(int report, const Crash& crash) {
    const pid_t copy = ::_Fork();
    if (copy == 0) {
        for (const int signal : fatalSignals)
            std::signal(signal, SIG_DFL);
        std::signal(SIGALRM, SIG_DFL);
        sigset_t none;
        sigemptyset(&none);
        ::sigprocmask(SIG_SETMASK, &none, nullptr);
        ::alarm(patience);
        keepNewestReports(folderOfReports.c_str());
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
    FixedText::write(report, "\nStack:\n");
    if (!tidyUpAndWriteStackFromCopy(report, crash))
        writeStackAsAddresses(report);
    FixedText::write(report, "\nLog:\n");
    recentLines.writeTo(report);
}

void report(const Crash& crash) {
    if (folderOfReports.view().empty())
        return;
    const FixedText path = pathOfReport(crash);
    const UniqueDescriptor file(
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!file)
        return;
    ::fchmod(file.get(), S_IRUSR | S_IWUSR); // whatever the umask
    writeReport(file.get(), crash);
    FixedText message;
    message << "The report of this crash is in " << path.view() << "\n";
    writeToStandardError(message.view());
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
    reason << message;
}

[[noreturn]] void terminated() {
    if (const std::type_info* type = abi::__cxa_current_exception_type()) {
        int status = 0;
        char* name = abi::__cxa_demangle(type->name(), nullptr, nullptr, &status);
        reason << "uncaught exception " << (name ? name : type->name());
        std::free(name);
        try {
            throw;
        } catch (const std::exception& exception) {
            reason << ": " << exception.what();
        } catch (...) { // NOLINT(bugprone-empty-catch): its type is all there is to tell
        }
    } else {
        reason << "terminated without an exception";
    }
    FixedText message;
    message << reason.view() << "\n";
    writeToStandardError(message.view());
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
    folderOfReports << folder;
    versionOfProgram << version;
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
