#include "Companions/RegistryDaemon/BusProcesses.h"
#include "Companions/RegistryDaemon/Registry.h"
#include "Platform/Link/DBus/DBusExport.h"
#include "Platform/Link/DBus/DBusWire.h"
#include "Shared/VApp.h"

#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

using namespace velloren;

namespace {

/// Owners of sd-bus's objects, ended in the order that they need.
struct Session {
    sd_event* loop = nullptr;
    sd_bus* bus = nullptr;

    Session() = default;
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    ~Session() {
        sd_bus_flush_close_unref(bus);
        sd_event_unref(loop);
    }
};

int fail(const char* what, int error) {
    std::fprintf(stderr, "velloren-agent: %s: %s\n", what, std::strerror(-error));
    return EXIT_FAILURE;
}

bool endsOnSignals(sd_event* loop) {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&signals, signal);
    if (sigprocmask(SIG_BLOCK, &signals, nullptr) != 0)
        return false;
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        if (sd_event_add_signal(loop, nullptr, signal, nullptr, nullptr) < 0) // no handler: ends the loop
            return false;
    }
    return true;
}

int endsWithTheBus(sd_bus_message* message, void* loop, sd_bus_error*) {
    if (wire::isLocalSignal(*message, "Disconnected"))
        sd_event_exit(static_cast<sd_event*>(loop), 0);
    return 0;
}

} // namespace

int main() {
    Session session;
    if (const int error = sd_event_default(&session.loop); error < 0 || !endsOnSignals(session.loop))
        return fail("the event loop could not be made", error);
    if (const int error = sd_bus_open_user(&session.bus); error < 0)
        return fail("there is no session bus", error);

    BusProcesses processes(session.bus);
    Registry registry(processes);
    const auto served = DBusExport::serve(session.bus, exportedEndPointHandling(registry));
    if (!served)
        return fail("the registry cannot be served", -ENOMEM);
    if (const int error = sd_bus_add_filter(session.bus, nullptr, endsWithTheBus, session.loop); error < 0)
        return fail("the end of the session bus cannot be followed", error);

    const std::string name = VApp(VApp::agent).bundleIdentifier();
    // Behind another instance it waits in line, and serves once that has gone.
    if (const int error = sd_bus_request_name(session.bus, name.c_str(), SD_BUS_NAME_QUEUE);
        error < 0 && error != -EEXIST)
        return fail("the session bus does not let this program have its name", error);
    if (const int error = sd_bus_attach_event(session.bus, session.loop, SD_EVENT_PRIORITY_NORMAL); error < 0)
        return fail("the event loop could not be made", error);
    return sd_event_loop(session.loop) < 0 ? EXIT_FAILURE : EXIT_SUCCESS;
}
