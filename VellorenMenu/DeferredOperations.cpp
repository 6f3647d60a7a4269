#include "Shared/VApp.h"
#include "VellorenMenu/DelegateLog.h"
#include "VellorenMenu/MainAppLink.h"

#include <utility>

namespace velloren {

namespace {

constexpr auto exists = "XPC connection to main app exists. ";
constexpr auto doesNotExist = "XPC connection to main app doesn't exist. ";
constexpr auto isSent = " operation is immediately sent to Agent, waiting for main app to receive...";
constexpr auto isRecorded = " operation is recorded, waiting for main app to launch...";

/// How an operation shows in the log, and the call that carries it out.
struct Sender {
    Communication* proxy; ///< none drops the call; it is logged all the same

    void operator()(const MainAppLink::CreateNewMeeting&) const {
        logSending("Velloren Menu agent?.createNewMeeting()");
        if (proxy)
            proxy->createNewMeeting();
    }

    void operator()(const MainAppLink::OpenMeeting& operation) const {
        logSending("Velloren Menu agent?.openMeeting(withId: " + operation.id + ")");
        if (proxy)
            proxy->openMeetingWithId(operation.id);
    }

  private:
    static void logSending(const std::string& message) {
        Logger::sharedInstance().debug(message, delegateFunction("sendDelayedOperationsToMainApp()"));
    }
};

} // namespace

/// Makes operations again of the requests that a connection gives back.
class MainAppLink::GivenBack final : public Communication {
  public:
    std::deque<Operation> operations;

    void openMeetingWithId(const std::string& id) override { operations.emplace_back(OpenMeeting{id}); }

    void createNewMeeting() override { operations.emplace_back(CreateNewMeeting{}); }

    void fetchUpcomingMeetings(MeetingsReply) override {}

    void displaySyncing() override {}

    void displayNotSyncing() override {}
};

void MainAppLink::takeBackUndelivered() {
    if (!mainAppCallerConnection)
        return;
    GivenBack back;
    for (const auto& request : mainAppCallerConnection->takeBack())
        repeatRequest(request, back);
    operationsQueue.insert(operationsQueue.begin(), back.operations.begin(), back.operations.end());
}

void MainAppLink::createNewMeeting() {
    const LogOrigin origin = delegateFunction("createNewMeeting()");
    if (mainAppCallerConnection) {
        Logger::sharedInstance().info(std::string(exists) + "Create new meeting" + isSent, origin);
        if (mainAppCallerProxy)
            mainAppCallerProxy->createNewMeeting();
        return;
    }
    Logger::sharedInstance().info(std::string(doesNotExist) + "Create new meeting" + isRecorded, origin);
    deferUntilMainAppRuns(CreateNewMeeting{});
}

void MainAppLink::openMeeting(const std::string& id) {
    const LogOrigin origin = delegateFunction("openMeeting");
    if (mainAppCallerConnection) {
        Logger::sharedInstance().info(exists + ("Open meeting " + id) + isSent, origin);
        if (mainAppCallerProxy)
            mainAppCallerProxy->openMeetingWithId(id);
        return;
    }
    Logger::sharedInstance().info(doesNotExist + ("Open meeting " + id) + isRecorded, origin);
    deferUntilMainAppRuns(OpenMeeting{id});
}

void MainAppLink::deferUntilMainAppRuns(Operation operation) {
    operationsQueue.push_back(std::move(operation));
    VApp(VApp::main).launchIfNotRunning();
}

void MainAppLink::sendDelayedOperationsToMainApp() {
    while (!operationsQueue.empty()) {
        const Operation operation = std::move(operationsQueue.front());
        operationsQueue.pop_front();
        std::visit(Sender{mainAppCallerProxy.get()}, operation);
    }
}

} // namespace velloren
