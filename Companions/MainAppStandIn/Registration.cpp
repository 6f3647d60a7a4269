#include "Companions/MainAppStandIn/Registration.h"

#include "Shared/EndPointHandling.h"
#include "Shared/VApp.h"

#include <cstdio>
#include <utility>

namespace velloren {

namespace {

/// One call on the registry, over a connection that goes once it is through.
template <class Call>
void withRegistry(Link& link, const Call& call) {
    const auto connection = link.connectionToService(VApp(VApp::agent).bundleIdentifier());
    if (!connection)
        return;
    connection->setRemoteObjectInterface(endPointHandlingInterface());
    connection->resume();
    if (const auto registry = std::dynamic_pointer_cast<EndPointHandling>(connection->remoteObjectProxy()))
        call(*registry);
}

} // namespace

Registration::Registration(Link& link, const QDBusConnection& bus, Endpoint endpoint)
    : link(link), endpoint(std::move(endpoint)),
      registryOwner(QString::fromStdString(VApp(VApp::agent).bundleIdentifier()), bus,
                    QDBusServiceWatcher::WatchForOwnerChange) {
    connect(&registryOwner, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString&, const QString& newOwner) {
                if (started && !newOwner.isEmpty())
                    registerEndpoint();
            });
}

Registration::~Registration() {
    if (!started)
        return;
    withRegistry(link, [](EndPointHandling& registry) {
        registry.removeListenerEndpoint(VApp(VApp::main).bundleIdentifier());
    });
}

void Registration::start() {
    started = true;
    registerEndpoint();
}

void Registration::registerEndpoint() {
    withRegistry(link, [this](EndPointHandling& registry) {
        registry.registerListenerEndpoint(endpoint, VApp(VApp::main).bundleIdentifier(), [](bool stored) {
            if (!stored)
                std::fputs("velloren-main: the registry did not take the endpoint\n", stderr);
        });
    });
}

} // namespace velloren
