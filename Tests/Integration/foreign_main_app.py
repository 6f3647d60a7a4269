#!/usr/bin/python3
"""A main app of another make: the far end of the link on GDBus, written from the wire contract alone."""

import argparse
import os
import signal
import socket
import sys

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
    <method name="displaySyncing"/>
    <method name="displayNotSyncing"/>
  </interface>
</node>
"""
).interfaces[0]


def meeting(number):
    return {
        "id": GLib.Variant("s", f"demo-{number}"),
        "title": GLib.Variant("s", f"Meeting {number}"),
        "startTime": GLib.Variant("s", "2001-03-07T14:05:00+01:00"),
    }


def reply(kind):
    if kind == "wrong-type":
        return GLib.Variant("as", ["this", "is", "no", "list", "of", "meetings"])
    if kind == "not-strings":
        odd = [
            {"id": GLib.Variant("u", 7), "title": GLib.Variant("b", True)},
            {"id": GLib.Variant("as", ["a"]), "startTime": GLib.Variant("(ii)", (1, 2))},
            {},
        ]
        return GLib.Variant("aa{sv}", odd)
    count = 20000 if kind == "many" else 4
    return GLib.Variant("aa{sv}", [meeting(number) for number in range(1, count + 1)])


class MainApp:
    def __init__(self, options):
        self.options = options
        self.connections = []
        self.bus = Gio.bus_get_sync(Gio.BusType.SESSION)

    def log(self, request):
        with open(self.options.log_requests, "a", encoding="utf-8") as log:
            log.write(request + "\n")

    def called(self, connection, sender, path, interface, method, parameters, invocation):
        if method == "openMeetingWithId":
            self.log("open " + parameters.unpack()[0])
        elif method == "createNewMeeting":
            self.log("create")
        elif method == "fetchUpcomingMeetings":
            self.log("fetch")
            if self.options.reply == "never":
                self.connections.append(invocation)
                return
            invocation.return_value(GLib.Variant("(v)", (reply(self.options.reply),)))
            return
        invocation.return_value(None)

    def accepted(self, server, connection):
        self.connections.append(connection)
        connection.register_object("/com/velloren/Communication", INTERFACE, self.called, None, None)
        return True

    def listen(self):
        folder = os.path.join(os.environ["XDG_RUNTIME_DIR"], "velloren")
        os.makedirs(folder, mode=0o700, exist_ok=True)
        path = os.path.join(folder, f"foreign-{os.getpid()}")
        if self.options.never_authenticate:
            self.silent = socket.socket(socket.AF_UNIX)
            self.silent.bind(path)
            self.silent.listen(16)
            return "unix:path=" + path
        late = self.options.serve_after > 0
        served = path + ".late" if late else path
        observer = Gio.DBusAuthObserver()
        observer.connect("allow-mechanism", lambda _, mechanism: mechanism == "EXTERNAL")
        self.server = Gio.DBusServer.new_sync(
            "unix:path=" + served, Gio.DBusServerFlags.NONE, Gio.dbus_generate_guid(), observer
        )
        self.server.connect("new-connection", self.accepted)
        self.server.start()
        if late:
            self.turn_away(path)
            GLib.timeout_add(int(1000 * self.options.serve_after), lambda: os.rename(served, path) or self.early.close())
        return "unix:path=" + path

    def turn_away(self, path):
        """Until it serves, whoever comes is hung up on, or finds the queue of connections full."""
        self.early = socket.socket(socket.AF_UNIX)
        self.early.bind(path)
        if self.options.until_then == "full":
            self.early.listen(0)
            self.filler = socket.socket(socket.AF_UNIX)
            self.filler.connect(path)
            return
        self.early.listen(16)
        GLib.io_add_watch(self.early.fileno(), GLib.IO_IN, lambda *_: self.early.accept()[0].close() or True)

    def register(self, endpoint):
        stored = self.bus.call_sync(
            REGISTRY,
            "/com/velloren/EndPointHandling",
            "com.velloren.EndPointHandling",
            "registerListenerEndpoint",
            GLib.Variant("(ss)", (endpoint, MAIN_APP)),
            GLib.VariantType("(b)"),
            Gio.DBusCallFlags.NONE,
            -1,
        )
        if not stored.unpack()[0]:
            sys.exit("the registry did not take the endpoint")

    def run(self):
        endpoint = self.listen()
        Gio.bus_own_name_on_connection(self.bus, MAIN_APP, Gio.BusNameOwnerFlags.NONE, None, None)
        self.register(endpoint)
        loop = GLib.MainLoop()
        GLib.unix_signal_add(GLib.PRIORITY_DEFAULT, signal.SIGTERM, loop.quit)
        loop.run()


parser = argparse.ArgumentParser()
parser.add_argument("--log-requests", required=True)
parser.add_argument("--reply", default="list", choices=["list", "wrong-type", "not-strings", "many", "never"])
parser.add_argument("--never-authenticate", action="store_true")
parser.add_argument("--serve-after", type=float, default=0, help="seconds after the registration")
parser.add_argument("--until-then", default="hang-up", choices=["hang-up", "full"])
MainApp(parser.parse_args()).run()
