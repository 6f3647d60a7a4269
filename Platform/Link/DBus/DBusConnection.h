#pragma once

#include "Platform/Foundation/UniqueDescriptor.h"
#include "Platform/Link/DBus/BusLoop.h"
#include "Platform/Link/DBus/DBusWire.h"
#include "Platform/Link/Link.h"

#include <systemd/sd-bus.h>

#include <chrono>
#include <deque>
#include <memory>
#include <set>
#include <string>
#include <variant>

namespace velloren {

/// The sd-bus connection to a service or an endpoint, and the calls on it: those that wait until the far end
/// lets this process in, and those that wait for their answer. Goes on after its owner released it, until the
/// last of them is done. Main thread only.
class DBusConnection final : public Connection, public std::enable_shared_from_this<DBusConnection> {
  public:
    /// A service by its name on the session bus, or an endpoint.
    using FarEnd = std::variant<std::string, Endpoint>;
    /// Keeps each connection until it is closed, also when nobody else does.
    using Keeper = std::set<std::shared_ptr<DBusConnection>>;

    struct Call {
        enum class Kind { Question, Request, Notice };

        Kind kind;
        std::string objectPath;
        std::string interface;
        std::string method;
        Channel::Arguments arguments;
        ErrorHandler failed;                   ///< may be none
        Channel::Reply reply = {};             ///< of a question
        AnswerLimit limit = {};                ///< of a question
        Channel::Undelivered undelivered = {}; ///< of a request; may be none
    };

    /// Loop and keeper are there until it is closed.
    DBusConnection(BusLoop& loop, Keeper& keeper, FarEnd farEnd, std::chrono::milliseconds callTimeout);
    ~DBusConnection() override;

    void setRemoteObjectInterface(RemoteInterface newInterface) override;
    void setInterruptionHandler(Handler handler) override;
    void setInvalidationHandler(Handler handler) override;
    void resume() override;
    void giveBack() override;
    [[nodiscard]] std::shared_ptr<RemoteObject> remoteObjectProxy() override;
    [[nodiscard]] std::shared_ptr<RemoteObject>
    remoteObjectProxyWithErrorHandler(ErrorHandler handler) override;
    [[nodiscard]] std::string description() const override;

    /// Makes a call, after those made before, as soon as the connection stands.
    void call(Call call);
    /// The owner has gone: closes as soon as every call was answered or failed.
    void release();
    /// Sends what a service is still to get, waiting a second for it at most, then closes.
    void close();

  private:
    struct Outstanding;
    enum class State { New, Connecting, Established, Ended };

    void openService();
    void attempt();
    [[nodiscard]] bool open(UniqueDescriptor connected);
    [[nodiscard]] bool follow();
    void attemptLater();
    void disconnected();
    void end();
    void handOverWaiting();
    void closeSoonIfDone();
    [[nodiscard]] wire::Message messageFor(const Call& call) const;
    [[nodiscard]] int send(const Call& call);
    [[nodiscard]] int ask(sd_bus_message& message, const Call& call);

    static int received(sd_bus_message* message, void* self, sd_bus_error*);
    static int answered(sd_bus_message* message, void* outstanding, sd_bus_error*);

    BusLoop& loop;
    Keeper& keeper;
    const FarEnd farEnd;
    const std::chrono::milliseconds callTimeout;
    RemoteInterface interface;
    Handler interruption;
    Handler invalidation;
    State state = State::New;
    std::chrono::milliseconds retryDelay;
    sd_bus* bus = nullptr;
    bool isReleased = false;
    std::deque<Call> waiting;
    std::size_t unanswered = 0;
};

} // namespace velloren
