#include "Platform/Freedesktop/Session/TerminationSignals.h"

#include "Platform/Foundation/FatalError.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace velloren {

namespace {

constexpr std::array terminating{SIGTERM, SIGINT, SIGHUP};
constexpr unsigned longestShutDown = 4; // seconds

// A pipe from the signal's handler to the main thread. It lives as long as the process does, which can hang
// after everything else is gone.
std::array<int, 2> arrivals{-1, -1};
volatile std::sig_atomic_t isEnding = 0;

void arrived(int signal) {
    const int error = errno;
    const auto number = static_cast<unsigned char>(signal);
    (void)!::write(arrivals[1], &number, sizeof number); // full, it holds more than enough of them
    if (!isEnding)
        ::alarm(longestShutDown);
    isEnding = 1;
    errno = error;
}

void patienceEnded(int) {
    ::_exit(EXIT_SUCCESS);
}

void handle(int signal, void (*handler)(int)) {
    struct sigaction action {};

    if (::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN)
        return; // whoever started this process wants it to outlive the signal
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    ::sigaction(signal, &action, nullptr);
}

void unblock(const std::array<int, 4>& signals) {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : signals)
        sigaddset(&set, signal);
    ::pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

} // namespace

TerminationSignals::TerminationSignals() {
    if (::pipe2(arrivals.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        fatalError("the pipe for signals could not be made");
    handle(SIGALRM, patienceEnded);
    for (const int signal : terminating)
        handle(signal, arrived);
    unblock({SIGTERM, SIGINT, SIGHUP, SIGALRM});
}

TerminationSignals::~TerminationSignals() = default;

void TerminationSignals::setHandler(std::function<void(const std::string&)> newHandler) {
    handler = std::move(newHandler);
    arrival = std::make_unique<QSocketNotifier>(arrivals[0], QSocketNotifier::Read);
    QObject::connect(arrival.get(), &QSocketNotifier::activated, arrival.get(), [this] { deliver(); });
}

void TerminationSignals::deliver() {
    unsigned char signal = 0;
    if (handler && ::read(arrivals[0], &signal, sizeof signal) == sizeof signal)
        handler("<Signal: SIG" + std::string(::sigabbrev_np(signal)) + ">");
}

} // namespace velloren
