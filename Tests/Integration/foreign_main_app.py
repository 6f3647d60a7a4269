"""What a main app of another make needs: the far end of the link on GDBus, written from the wire contract alone."""

import os

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

MAIN_APP = "com.velloren.velloren-mac"
REGISTRY = "com.velloren.velloren-mac.agent"

INTERFACE = Gio.DBusNodeInfo.new_for_xml(
    """
<node>
  <interface name="com.velloren.Communication">
    <method name="openMeetingWithId"><arg type="s" direction="in"/></method>
    <method name="createNewMeeting"/>
    <method name="fetchUpcomingMeetings"><arg type="v" direction="out"/></method>
  </interface>
</node>
"""
).interfaces[0]

connections = []


def listen(called, asked):
    """Serves the interface; `asked` is called for everyone who wants to be let in, on another thread."""

    def accepted(server, connection):
        connections.append(connection)
        connection.register_object("/com/velloren/Communication", INTERFACE, called, None, None)
        return True

    def allowed(observer, mechanism):
        asked()
        return mechanism == "EXTERNAL"

    folder = os.path.join(os.environ["XDG_RUNTIME_DIR"], "velloren")
    os.makedirs(folder, mode=0o700, exist_ok=True)
    endpoint = f"unix:path={folder}/foreign-{os.getpid()}"
    observer = Gio.DBusAuthObserver()
    observer.connect("allow-mechanism", allowed)
    listener = Gio.DBusServer.new_sync(endpoint, Gio.DBusServerFlags.NONE, Gio.dbus_generate_guid(), observer)
    listener.connect("new-connection", accepted)
    listener.start()
    connections.append(listener)
    return endpoint


def own_name():
    Gio.bus_own_name_on_connection(Gio.bus_get_sync(Gio.BusType.SESSION), MAIN_APP, 0, None, None)


def register(endpoint):
    bus = Gio.bus_get_sync(Gio.BusType.SESSION)
    registry = Gio.DBusProxy.new_sync(
        bus, 0, None, REGISTRY, "/com/velloren/EndPointHandling", "com.velloren.EndPointHandling", None
    )
    return registry.registerListenerEndpoint("(ss)", endpoint, MAIN_APP)
