#include "Platform/Freedesktop/Session/TerminationSignals.h"

#include <pthread.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace velloren {

TerminationSignals::TerminationSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&signals, signal);
    pthread_sigmask(SIG_BLOCK, &signals, &formerMask);
    descriptor = signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
}

TerminationSignals::~TerminationSignals() {
    arrival.reset();
    close(descriptor);
    pthread_sigmask(SIG_SETMASK, &formerMask, nullptr);
}

void TerminationSignals::setHandler(std::function<void(const std::string&)> newHandler) {
    handler = std::move(newHandler);
    arrival = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read);
    QObject::connect(arrival.get(), &QSocketNotifier::activated, arrival.get(), [this] { deliver(); });
}

void TerminationSignals::deliver() {
    signalfd_siginfo info{};
    if (handler && read(descriptor, &info, sizeof info) == sizeof info)
        handler("<Signal: SIG" + std::string(sigabbrev_np(int(info.ssi_signo))) + ">");
}

} // namespace velloren
