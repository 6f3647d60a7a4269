#include "Platform/Freedesktop/Backends/SessionBackends.h"

#include "Platform/Foundation/SharedInstance.h"
#include "Platform/Freedesktop/Session/DBusWorkspace.h"
#include "Platform/Freedesktop/Tray/StatusNotifierBar.h"
#include "Platform/Freedesktop/Windowing/FocusEvents.h"
#include "Platform/Freedesktop/Windowing/OverlayEvents.h"
#include "Platform/Freedesktop/Windowing/PlainWindowServer.h"
#include "Platform/Freedesktop/Windowing/Wayland/LayerWindowServer.h"
#include "Platform/Freedesktop/Windowing/X11/X11WindowServer.h"
#include "Platform/Freedesktop/Windowing/X11/XInputEvents.h"
#include "Platform/Freedesktop/Windowing/X11/XWaylandWindowServer.h"

namespace velloren {

namespace {

template <class OverlayServer>
void provideWithOverlay() {
    SharedInstance<GlobalEvents>::provide([] { return std::make_unique<OverlayEvents>(); });
    auto& events = static_cast<OverlayEvents&>(SharedInstance<GlobalEvents>::get());
    SharedInstance<WindowServer>::provide([&events] { return std::make_unique<OverlayServer>(events); });
    WindowServer::shared(); // now: a compositor's answers are to be there by the first click
}

void provideDisplay(SessionDisplay display) {
    using Server = SharedInstance<WindowServer>;
    using Events = SharedInstance<GlobalEvents>;
    switch (display) {
    case SessionDisplay::X11:
        Server::provide([] { return std::make_unique<X11WindowServer>(); });
        Events::provide([] { return std::make_unique<XInputEvents>(); });
        break;
    case SessionDisplay::XWayland:
        provideWithOverlay<XWaylandWindowServer>();
        break;
    case SessionDisplay::LayerShell:
        provideWithOverlay<LayerWindowServer>();
        break;
    case SessionDisplay::Other:
        Server::provide([] { return std::make_unique<PlainWindowServer>(); });
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
    SharedInstance<WindowServer>::reset();
    SharedInstance<GlobalEvents>::reset();
    SharedInstance<Workspace>::reset();
}

} // namespace velloren
