#include "Platform/Freedesktop/Backends/SessionBackends.h"

#include "Platform/Foundation/SharedInstance.h"
#include "Platform/Freedesktop/Session/DBusWorkspace.h"
#include "Platform/Freedesktop/Tray/StatusNotifierBar.h"
#include "Platform/Freedesktop/Windowing/CaughtPresses.h"
#include "Platform/Freedesktop/Windowing/FocusEvents.h"
#include "Platform/Freedesktop/Windowing/Wayland/LayerWindowServer.h"
#include "Platform/Freedesktop/Windowing/X11/X11WindowServer.h"
#include "Platform/Freedesktop/Windowing/X11/XInputEvents.h"

namespace velloren {

namespace {

template <class Taker, class... Arguments>
void providePressTaker(Arguments... arguments) {
    SharedInstance<WindowServer>::provide([=] { return std::make_unique<Taker>(arguments...); });
    // Now: a compositor's answers are to be there by the first click.
    auto& server = static_cast<Taker&>(SharedInstance<WindowServer>::get());
    SharedInstance<GlobalEvents>::provide([&server] { return std::make_unique<CaughtPresses>(server); });
}

void provideDisplay(SessionDisplay display) {
    using Server = SharedInstance<WindowServer>;
    using Events = SharedInstance<GlobalEvents>;
    switch (display) {
    case SessionDisplay::X11:
        Server::provide([] { return std::make_unique<X11WindowServer>(X11WindowServer::Session::X11); });
        Events::provide([] { return std::make_unique<XInputEvents>(); });
        break;
    case SessionDisplay::XWayland:
        providePressTaker<X11WindowServer>(X11WindowServer::Session::Wayland);
        break;
    case SessionDisplay::LayerShell:
        providePressTaker<LayerWindowServer>();
        break;
    case SessionDisplay::Wayland:
        Server::provide([] { return std::make_unique<X11WindowServer>(X11WindowServer::Session::Wayland); });
        Events::provide([] { return std::make_unique<FocusEvents>(); });
        break;
    }
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
