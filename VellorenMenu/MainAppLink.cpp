#include "VellorenMenu/MainAppLink.h"

#include "Platform/Foundation/FatalError.h"
#include "Platform/Foundation/RunLoop.h"
#include "Services/VFoundation.h"
#include "Shared/VApp.h"
#include "VellorenMenu/DelegateLog.h"
#include "VellorenMenu/EndPointHandler.h"

#include <array>
#include <limits>
#include <pthread.h>
#include <unistd.h>
#include <utility>

namespace velloren {

namespace {

constexpr std::int64_t lastAttempt = 9;
constexpr double retryDelay = 0.5; // seconds

constexpr auto exists = "XPC connection to main app exists. ";
constexpr auto doesNotExist = "XPC connection to main app doesn't exist. ";
constexpr auto isSent = " operation is immediately sent to Agent, waiting for main app to receive...";
constexpr auto isRecorded = " operation is recorded, waiting for main app to launch...";

constexpr auto checkFunction = "checkIfMainAppCallerConnectionEstablishedAndRetryIfNot()";
constexpr auto setupFunction = "setupMainAppCallerConnection(completion:)";

std::string currentThreadDescription() {
    std::array<char, 16> name{};
    ::pthread_getname_np(::pthread_self(), name.data(), name.size());
    return "<Thread: " + std::to_string(::gettid()) + ">{name = " + name.data() + "}";
}

std::string printedCount(const Communication::Meetings& meetings) {
    return meetings ? "Optional(" + std::to_string(meetings->size()) + ")" : "nil";
}

/// The call that carries an operation out, as the log shows it.
struct PrintedCall {
    std::string operator()(const MainAppLink::CreateNewMeeting&) const { return "createNewMeeting()"; }

    std::string operator()(const MainAppLink::OpenMeeting& operation) const {
        return "openMeeting(withId: " + operation.id + ")";
    }
};

/// Makes that call.
struct Call {
    Communication& proxy;
    Communication::Undelivered undelivered;

    void operator()(const MainAppLink::CreateNewMeeting&) const { proxy.createNewMeeting(undelivered); }

    void operator()(const MainAppLink::OpenMeeting& operation) const {
        proxy.openMeetingWithId(operation.id, undelivered);
    }
};

} // namespace

MainAppLink::MainAppLink(Link& link) : processLink(link) {}

MainAppLink::~MainAppLink() = default;

void MainAppLink::checkIfMainAppCallerConnectionEstablishedAndRetryIfNot() {
    if (mainAppCallerConnection || autoRetryConnectionAttempt > lastAttempt)
        return;

    Logger& log = Logger::sharedInstance();
    log.info("Connection with main app is not yet established", delegateFunction(checkFunction));
    log.info("Retrying in 0.5 seconds to establish connection with main app again",
             delegateFunction(checkFunction));

    if (autoRetryConnectionAttempt == std::numeric_limits<std::int64_t>::max())
        fatalError("the count of connection attempts overflowed");
    ++autoRetryConnectionAttempt;
    setupMainAppCallerConnection([this] { sendDelayedOperationsToMainApp(); });
    delay(retryDelay, [this, check = ++latestCheck] {
        if (check == latestCheck)
            checkIfMainAppCallerConnectionEstablishedAndRetryIfNot();
    });
}

void MainAppLink::setupMainAppCallerConnection(Completion completion) {
    Logger::sharedInstance().info("Trying to establish connection with the main app. Running in thread: " +
                                      currentThreadDescription(),
                                  delegateFunction(setupFunction));
    if (!RunLoop::main().isCurrent())
        fatalError("setupMainAppCallerConnection(completion:) runs on the main thread only");
    if (mainAppCallerConnection)
        return;

    const auto handler = std::make_shared<EndPointHandler>(processLink);
    if (!handler->remoteObjectProxy)
        return;
    handler->remoteObjectProxy->retrieveListenerEndpoint(
        VApp(VApp::main).bundleIdentifier(),
        [this, handler, completion = std::move(completion)](const std::optional<Endpoint>& endpoint) {
            if (!endpoint) {
                Logger::sharedInstance().info(
                    "Retrieving listener endpoint from main app failed, endPoint is nil",
                    delegateFunction(setupFunction));
                return;
            }
            RunLoop::main().post([this, handler, endpoint = *endpoint, completion] {
                connectToMainApp(handler, endpoint, completion);
            });
        });
}

void MainAppLink::connectToMainApp(const std::shared_ptr<EndPointHandler>& handler, const Endpoint& endpoint,
                                   const Completion& completion) {
    takeBackUndelivered();
    mainAppCallerConnection = processLink.connectionToEndpoint(endpoint);
    ++latestConnection;
    mainAppCallerConnection->setRemoteObjectInterface(communicationInterface());
    mainAppCallerProxy = std::dynamic_pointer_cast<Communication>(
        mainAppCallerConnection->remoteObjectProxyWithErrorHandler([](const std::string& error) {
            Logger::sharedInstance().error("Remote object proxy returned with error " + error,
                                           delegateFunction(setupFunction));
        }));

    mainAppCallerConnection->setInterruptionHandler(clearUpAfter("interrupted"));
    mainAppCallerConnection->setInvalidationHandler(clearUpAfter("invalidated"));
    mainAppCallerConnection->resume();

    Logger::sharedInstance().info("Connection to main app established with handler=" +
                                      handler->description() + ", endPoint=" + endpoint.address(),
                                  delegateFunction(setupFunction));
    attemptsBeforeConnection = std::exchange(autoRetryConnectionAttempt, 0);
    mainAppConnected();
    if (completion)
        completion();
}

Connection::Handler MainAppLink::clearUpAfter(const char* event) {
    return [this, event, connection = latestConnection] {
        Logger::sharedInstance().info(std::string("XPC mainAppCallerConnection is ") + event,
                                      delegateFunction(setupFunction));
        RunLoop::main().post([this, connection] {
            // Another endpoint may have arrived meanwhile: its connection is none of this one's business.
            if (mainAppCallerConnection && connection != latestConnection)
                return;
            // Its end comes with the attempts that were left, or one that never stands brings ten more each
            // time.
            if (mainAppCallerConnection)
                autoRetryConnectionAttempt = attemptsBeforeConnection;
            clearUpMainAppCallerConnection();
        });
    };
}

void MainAppLink::resetAttempts() {
    autoRetryConnectionAttempt = 0;
    attemptsBeforeConnection = 0;
}

void MainAppLink::clearUpMainAppCallerConnection() {
    Logger::sharedInstance().debug("clearUpXPCConnection()",
                                   delegateFunction("clearUpMainAppCallerConnection()"));
    mainAppCallerProxy = nullptr;
    if (mainAppCallerConnection) {
        mainAppCallerConnection->setInvalidationHandler(nullptr);
        mainAppCallerConnection->setInterruptionHandler(nullptr);
    }
    takeBackUndelivered();
    mainAppCallerConnection = nullptr;
}

void MainAppLink::fetchMeetings(MeetingsCompletion completion) {
    constexpr auto function = "fetchMeetings";
    Logger::sharedInstance().debug("Fetching meetings from main app...", delegateFunction(function));
    if (!mainAppCallerProxy)
        return;
    mainAppCallerProxy->fetchUpcomingMeetings(
        [completion = std::move(completion)](Communication::Meetings meetings) {
            Logger::sharedInstance().debug("Velloren Menu agent.fetchUpcomingMeetings(), meetings count = " +
                                               printedCount(meetings),
                                           delegateFunction(function));
            completion(std::move(meetings));
        });
}

void MainAppLink::createNewMeeting() {
    perform(CreateNewMeeting{}, "Create new meeting", delegateFunction("createNewMeeting()"));
}

void MainAppLink::openMeeting(const std::string& id) {
    perform(OpenMeeting{id}, "Open meeting " + id, delegateFunction("openMeeting"));
}

void MainAppLink::perform(const Operation& operation, const std::string& name, const LogOrigin& origin) {
    if (mainAppCallerConnection) {
        Logger::sharedInstance().info(exists + name + isSent, origin);
        send(operation);
        return;
    }
    Logger::sharedInstance().info(doesNotExist + name + isRecorded, origin);
    operationsQueue.push_back(operation);
    VApp(VApp::main).launchIfNotRunning();
}

void MainAppLink::send(const Operation& operation) {
    if (mainAppCallerProxy)
        std::visit(Call{*mainAppCallerProxy, [this, operation] { undelivered.push_back(operation); }},
                   operation);
}

void MainAppLink::takeBackUndelivered() {
    if (!mainAppCallerConnection)
        return;
    mainAppCallerConnection->giveBack();
    operationsQueue.insert(operationsQueue.begin(), undelivered.begin(), undelivered.end());
    undelivered.clear();
}

void MainAppLink::sendDelayedOperationsToMainApp() {
    while (!operationsQueue.empty()) {
        const Operation operation = std::move(operationsQueue.front());
        operationsQueue.pop_front();
        Logger::sharedInstance().debug("Velloren Menu agent?." + std::visit(PrintedCall(), operation),
                                       delegateFunction("sendDelayedOperationsToMainApp()"));
        send(operation);
    }
}

} // namespace velloren
