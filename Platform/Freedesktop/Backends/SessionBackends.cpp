#include "Platform/Freedesktop/Backends/SessionBackends.h"

#include "Platform/Foundation/SharedInstance.h"
#include "Platform/Freedesktop/Session/DBusWorkspace.h"
#include "Platform/Freedesktop/Tray/StatusNotifierBar.h"
#include "Platform/Freedesktop/Windowing/FocusEvents.h"
#include "Platform/Freedesktop/Windowing/LayerEvents.h"
#include "Platform/Freedesktop/Windowing/LayerWindowServer.h"
#include "Platform/Freedesktop/Windowing/X11WindowServer.h"
#include "Platform/Freedesktop/Windowing/XInputEvents.h"

namespace velloren {

namespace {

void provideDisplay(SessionDisplay display) {
    using Server = SharedInstance<WindowServer>;
    using Events = SharedInstance<GlobalEvents>;
    if (display == SessionDisplay::LayerShell) {
        Server::provide([] { return std::make_unique<LayerWindowServer>(); });
        // Now: the compositor's answers are to be there by the first click.
        auto& server = static_cast<LayerWindowServer&>(Server::get());
        Events::provide([&server] { return std::make_unique<LayerEvents>(server); });
        return;
    }
    using Session = X11WindowServer::Session;
    const Session session = display == SessionDisplay::X11 ? Session::X11 : Session::Wayland;
    Server::provide([session] { return std::make_unique<X11WindowServer>(session); });
    if (display == SessionDisplay::X11)
        Events::provide([] { return std::make_unique<XInputEvents>(); });
    else
        Events::provide([] { return std::make_unique<FocusEvents>(); });
}

} // namespace

SessionBackends::SessionBackends(SessionDisplay display, const QDBusConnection& bus,
                                 const Identity& identity) {
    SharedInstance<Workspace>::provide(
        [bus, followed = identity.followed] { return std::make_unique<DBusWorkspace>(bus, followed); });
    provideDisplay(display);
    SharedInstance<StatusBar>::provide([bus, identity] {
        return std::make_unique<StatusNotifierBar>(bus, QString::fromStdString(identity.identifier),
                                                   QString::fromStdString(identity.title));
    });
}

SessionBackends::~SessionBackends() {
    SharedInstance<StatusBar>::reset();
    SharedInstance<GlobalEvents>::reset();
    SharedInstance<WindowServer>::reset();
    SharedInstance<Workspace>::reset();
}

} // namespace velloren
