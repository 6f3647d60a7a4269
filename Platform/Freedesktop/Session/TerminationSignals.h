#pragma once

#include <QSocketNotifier>

#include <csignal>
#include <functional>
#include <memory>
#include <string>

namespace velloren {

/// Turns SIGTERM, SIGINT and SIGHUP into a call on the main thread. Made before any other thread is, so that
/// all of them leave these signals to it.
class TerminationSignals final {
  public:
    TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;
    ~TerminationSignals();

    /// `handler` gets the signal's printed description. Called once the application object exists.
    void setHandler(std::function<void(const std::string& sender)> handler);

    /// Calls the handler at once for a signal that has arrived since. Does nothing without either.
    void deliver();

  private:
    std::function<void(const std::string&)> handler;
    sigset_t formerMask{};
    int descriptor = -1;
    std::unique_ptr<QSocketNotifier> arrival;
};

} // namespace velloren
