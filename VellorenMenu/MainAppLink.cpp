#include "VellorenMenu/MainAppLink.h"

#include "Platform/Foundation/FatalError.h"
#include "Platform/Foundation/RunLoop.h"
#include "Platform/Foundation/Thread.h"
#include "Services/VFoundation.h"
#include "Shared/VApp.h"
#include "VellorenMenu/DelegateLog.h"
#include "VellorenMenu/EndPointHandler.h"

#include <limits>
#include <utility>

namespace velloren {

namespace {

constexpr std::int64_t lastAttempt = 9;
constexpr double retryDelay = 0.5; // seconds

constexpr auto checkFunction = "checkIfMainAppCallerConnectionEstablishedAndRetryIfNot()";
constexpr auto setupFunction = "setupMainAppCallerConnection(completion:)";

std::string printedCount(const Communication::Meetings& meetings) {
    return meetings ? "Optional(" + std::to_string(meetings->size()) + ")" : "nil";
}

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

} // namespace velloren
