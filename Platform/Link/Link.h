#pragma once

#include "Platform/Link/Endpoint.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

/// Calls between the product's processes. An `Endpoint` names a process's `Listener`; a `Connection` leads to
/// an endpoint or to a named service and hands out proxies of the objects at its far end.
///
/// Main thread only. Replies and handlers run on the main run loop, never before the call that they belong to
/// returns. Nothing here ever waits for the far end.
namespace velloren {

/// One entry of a dictionary that travelled over the link. Anything but a Boolean or a text arrives as none.
using Scalar = std::variant<std::monostate, bool, std::string>;
using Dictionary = std::map<std::string, Scalar, std::less<>>;

/// What a call answers with. Anything but these arrives as none, and so does an answer that is larger than
/// its limit or cannot be read to its end; texts are valid UTF-8, without noncharacters.
using Value = std::variant<std::monostate, bool, std::string, std::vector<Dictionary>>;

/// How much of an answer is read.
struct AnswerLimit {
    std::size_t dictionaries = 0;
    std::size_t bytes = 65536; ///< of all its texts
};

/// Base of every proxy that a connection hands out. Which interface it serves is asked with `dynamic_cast`.
class RemoteObject {
  public:
    RemoteObject() = default;
    RemoteObject(const RemoteObject&) = delete;
    RemoteObject& operator=(const RemoteObject&) = delete;
    virtual ~RemoteObject() = default;
};

/// Carries calls to one object at the far end of a connection, in order. Proxies are written on top of it.
/// Calls made before the far end has let this process in are kept and go out once it does.
class Channel {
  public:
    using Arguments = std::vector<std::string>;
    using Reply = std::function<void(Value)>;
    /// Runs when a request is given back by its connection: it did not get to the far end and never will.
    using Undelivered = std::function<void()>;

    Channel() = default;
    Channel(const Channel&) = delete;
    Channel& operator=(const Channel&) = delete;
    virtual ~Channel() = default;

    /// Asks `method`. `reply` runs once when the far end answers, and never when it does not: it is missing,
    /// fails, takes too long, or the connection ends first. Such a failure goes to the proxy's error handler,
    /// and so does an answer that cannot be read.
    virtual void call(const std::string& method, Arguments arguments, Reply reply,
                      AnswerLimit limit = {}) = 0;

    /// Asks for something to be done that must not get lost: until it was handed to the far end, the
    /// connection can give it back. Its failure after that goes to the proxy's error handler.
    virtual void request(const std::string& method, Arguments arguments, Undelivered undelivered) = 0;

    /// Calls `method` and awaits no answer; failures are not reported.
    virtual void send(const std::string& method, Arguments arguments) = 0;
};

/// An interface at the far end: the object that serves it and the maker of its proxies.
struct RemoteInterface {
    std::string objectPath;
    std::string name;
    std::function<std::shared_ptr<RemoteObject>(std::shared_ptr<Channel>)> makeProxy;
};

/// An interface that this process serves.
struct ExportedInterface {
    using Answer = std::function<void(Value)>;
    using Handler = std::function<void(const Channel::Arguments&, const Answer&)>;

    /// What a method hands back; the wire form of each is fixed.
    enum class Result { Nothing, Boolean, Text, Dictionaries };

    struct Method {
        std::size_t argumentCount = 0; ///< all of them texts
        Result result = Result::Nothing;
        Handler handler; ///< calls the answer once; right away or later
    };

    std::string objectPath;
    std::string name;
    std::map<std::string, Method> methods;
};

/// A connection to a service or an endpoint. While somebody listens at an endpoint and does not let this
/// process in (is too busy to accept, keeps silent, hangs up), the connection goes on trying by itself.
///
/// Releasing it never waits: calls already made still go out and their replies still arrive, then it closes;
/// its interruption and invalidation handlers do not start to run afterwards.
class Connection {
  public:
    using Handler = std::function<void()>;
    using ErrorHandler = std::function<void(const std::string& error)>;

    Connection() = default;
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    virtual ~Connection() = default;

    virtual void setRemoteObjectInterface(RemoteInterface interface) = 0;

    /// Runs at most once: an established connection broke. Pass none to forget an earlier handler.
    virtual void setInterruptionHandler(Handler handler) = 0;

    /// Runs at most once: there is nobody to connect to. Pass none to forget an earlier handler.
    virtual void setInvalidationHandler(Handler handler) = 0;

    /// Starts the connection; does nothing the second time. Handlers and interface are set before.
    virtual void resume() = 0;

    /// The far object; none when no interface was set. Errors of its calls are dropped.
    [[nodiscard]] virtual std::shared_ptr<RemoteObject> remoteObjectProxy() = 0;

    /// The same, with a handler that is told of each call that fails.
    [[nodiscard]] virtual std::shared_ptr<RemoteObject>
    remoteObjectProxyWithErrorHandler(ErrorHandler handler) = 0;

    /// Gives back the requests that were not handed to the far end, oldest first and before it returns: those
    /// that wait for it to let this process in, and those made after the connection broke. They will not go
    /// out any more; questions that wait fail. A connection that has ended fails at its release what it did
    /// not give back.
    virtual void giveBack() = 0;

    /// A printed form for log lines.
    [[nodiscard]] virtual std::string description() const = 0;
};

/// A connection that another process of the same user made to a listener of this process.
class IncomingConnection {
  public:
    IncomingConnection() = default;
    IncomingConnection(const IncomingConnection&) = delete;
    IncomingConnection& operator=(const IncomingConnection&) = delete;
    virtual ~IncomingConnection() = default;

    virtual void setExportedInterface(ExportedInterface interface) = 0;
};

class Listener;

/// Decides about incoming connections.
class ListenerDelegate {
  public:
    ListenerDelegate() = default;
    ListenerDelegate(const ListenerDelegate&) = delete;
    ListenerDelegate& operator=(const ListenerDelegate&) = delete;
    virtual ~ListenerDelegate() = default;

    /// Whether to keep `connection`; a refused one is closed before anything is read from it. Refuses unless
    /// overridden. The listener keeps an accepted connection until its far end goes away.
    [[nodiscard]] virtual bool listenerShouldAcceptNewConnection(Listener& listener,
                                                                 IncomingConnection& connection);
};

/// This process's own socket. It lives, and its socket file with it, until it is released.
class Listener {
  public:
    Listener() = default;
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
    virtual ~Listener() = default;

    /// Held weakly: the delegate outlives the listener or is replaced by none.
    virtual void setDelegate(ListenerDelegate* delegate) = 0;

    /// Starts to listen.
    virtual void resume() = 0;

    /// Where others find this listener; none before it listens, or when it cannot (no runtime directory, or
    /// no room for a socket's name), which it says on standard error.
    [[nodiscard]] virtual std::optional<Endpoint> endpoint() const = 0;
};

/// Makes connections and listeners.
class Link {
  public:
    Link() = default;
    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;
    virtual ~Link() = default;

    /// A connection of its own to the service of that name on the session bus. Where that bus cannot be had,
    /// or stands still, its calls fail.
    [[nodiscard]] virtual std::shared_ptr<Connection> connectionToService(const std::string& serviceName) = 0;

    [[nodiscard]] virtual std::shared_ptr<Connection> connectionToEndpoint(const Endpoint& endpoint) = 0;

    /// A listener at a fresh socket of this process.
    [[nodiscard]] virtual std::unique_ptr<Listener> anonymousListener() = 0;
};

} // namespace velloren
