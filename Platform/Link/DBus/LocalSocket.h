#pragma once

#include "Platform/Foundation/UniqueDescriptor.h"
#include "Platform/Link/Endpoint.h"

namespace velloren {

/// Who was found at an endpoint.
struct Reached {
    /// A busy one cannot take this connection yet. Nobody is also a listener of another user.
    enum class Who { Listener, BusyListener, Nobody };

    Who who;
    UniqueDescriptor descriptor; ///< of the connected socket when there is a listener
};

/// Connects a socket to the endpoint, without waiting.
[[nodiscard]] Reached reach(const Endpoint& endpoint);

/// Whether somebody listens at the endpoint, busy or not.
[[nodiscard]] bool isListening(const Endpoint& endpoint);

/// Whether the socket's far end runs as the user of this process.
[[nodiscard]] bool peerIsSameUser(int descriptor);

} // namespace velloren
