#pragma once

#include "Platform/Link/Link.h"
#include "Services/VLogger.h"
#include "Shared/Communication.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace velloren {

class EndPointHandler;

/// The agent's side of its link to the main app: how the connection is found, made, retried and dropped, the
/// requests that go over it, and those that wait until there is one.
///
/// Connected means that `mainAppCallerConnection` is set; then, normally, `mainAppCallerProxy` is set as
/// well. Everything here is called on the main thread. The link outlives the object; the object outlives the
/// tasks that it leaves on the main run loop: it lives as long as that runs.
class MainAppLink {
  public:
    /// A request for the main app.
    struct OpenMeeting {
        std::string id;
    };

    struct CreateNewMeeting {};

    using Operation = std::variant<OpenMeeting, CreateNewMeeting>;

    using Completion = std::function<void()>;
    using MeetingsCompletion = std::function<void(Communication::Meetings)>;

    explicit MainAppLink(Link& link);
    MainAppLink(const MainAppLink&) = delete;
    MainAppLink& operator=(const MainAppLink&) = delete;
    virtual ~MainAppLink();

    /// Opens the meeting now or, when the main app is not connected, once it has been launched and is.
    void openMeeting(const std::string& id);
    /// The same for creating a meeting.
    void createNewMeeting();

    /// Asks the main app for its meetings. `completion` gets its answer, none when that is no list; it is
    /// never called when the main app is not connected or does not answer.
    void fetchMeetings(MeetingsCompletion completion);

    /// Tries to connect now and every half second, until there is a connection or ten attempts were made
    /// since the counter was last reset. Takes the place of the checks that are still to come.
    void checkIfMainAppCallerConnectionEstablishedAndRetryIfNot();

    /// Asks the registry for the main app's endpoint and connects to it. `completion`, which may be none,
    /// runs once the connection was made by this call; never when it was not.
    void setupMainAppCallerConnection(Completion completion);

    /// Drops the connection. What it did not deliver waits again, before everything else.
    void clearUpMainAppCallerConnection();

    /// Sends the waiting requests, oldest first.
    void sendDelayedOperationsToMainApp();

  protected:
    [[nodiscard]] Link& link() const { return processLink; }

    /// Called each time that there is a new connection.
    virtual void mainAppConnected() {}

    /// The next ten attempts are for a main app that was just launched.
    void resetAttempts();

    /// None while not connected, and when the far end's proxy is no `Communication`.
    std::shared_ptr<Communication> mainAppCallerProxy;
    std::shared_ptr<Connection> mainAppCallerConnection;
    std::deque<Operation> operationsQueue;
    /// States the limit; the check compares with its own number.
    std::int64_t autoRetryConnectionMaxAttempts = 10;
    std::int64_t autoRetryConnectionAttempt = 0;

  private:
    void connectToMainApp(const std::shared_ptr<EndPointHandler>& handler, const Endpoint& endpoint,
                          const Completion& completion);
    Connection::Handler clearUpAfter(const char* event);
    void takeBackUndelivered();
    /// Sends the operation, which is `name` in the log, now or once the main app was launched.
    void perform(const Operation& operation, const std::string& name, const LogOrigin& origin);
    /// Without a proxy the operation is dropped.
    void send(const Operation& operation);

    Link& processLink;
    /// What the connection just gave back, oldest first.
    std::vector<Operation> undelivered;
    std::uint64_t latestCheck = 0;
    std::uint64_t latestConnection = 0;
    /// What the counter was before the latest connection reset it.
    std::int64_t attemptsBeforeConnection = 0;
};

} // namespace velloren
