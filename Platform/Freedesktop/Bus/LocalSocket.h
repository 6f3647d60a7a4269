#pragma once

#include "Platform/Link/Link.h"

namespace velloren {

/// A socket connected to the endpoint, without waiting: the caller's to close. Negative when there is nobody
/// to connect to, nobody accepts (the queue of connections is full), or the listener is another user's.
[[nodiscard]] int connectedSocket(const Endpoint& endpoint);

/// Whether somebody listens at the endpoint. A listener that is too busy to accept counts.
[[nodiscard]] bool isListening(const Endpoint& endpoint);

/// Whether the socket's far end runs as the user of this process.
[[nodiscard]] bool peerIsSameUser(int descriptor);

} // namespace velloren
