#include "Platform/Link/Link.h"

namespace velloren {

bool ListenerDelegate::listenerShouldAcceptNewConnection(Listener&, IncomingConnection&) {
    return false;
}

} // namespace velloren
