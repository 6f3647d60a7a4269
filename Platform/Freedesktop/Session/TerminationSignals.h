#pragma once

#include <QSocketNotifier>

#include <functional>
#include <memory>
#include <string>

namespace velloren {

/// Turns SIGTERM, SIGINT and SIGHUP into a call on the main thread. Whatever that thread waits for, and
/// whatever the handler does: the process has ended five seconds after the first of them, with status 0 if
/// that has to happen by force. One per process.
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
    std::unique_ptr<QSocketNotifier> arrival;
};

} // namespace velloren
