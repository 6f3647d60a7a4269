#!/usr/bin/python3
"""A main app of another make: the far end of the link on GDBus, written from the wire contract alone."""

import argparse
import os
import signal
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
    <method name="displaySyncing"/>
    <method name="displayNotSyncing"/>
    <method name="fetchUpcomingMeetings"><arg type="v" direction="out"/></method>
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

    def called(self, connection, sender, path, interface, method, parameters, invocation):
        words = {"openMeetingWithId": "open", "createNewMeeting": "create", "fetchUpcomingMeetings": "fetch"}
        with open(self.options.log_requests, "a", encoding="utf-8") as log:
            print(words[method], *parameters.unpack(), file=log)
        answer = (reply(self.options.reply),) if method == "fetchUpcomingMeetings" else None
        invocation.return_value(answer and GLib.Variant("(v)", answer))

    def accepted(self, server, connection):
        self.connections.append(connection)
        connection.register_object("/com/velloren/Communication", INTERFACE, self.called, None, None)
        return True

    def listen(self):
        folder = os.path.join(os.environ["XDG_RUNTIME_DIR"], "velloren")
        os.makedirs(folder, mode=0o700, exist_ok=True)
        path = os.path.join(folder, f"foreign-{os.getpid()}")
        observer = Gio.DBusAuthObserver()
        observer.connect("allow-mechanism", lambda _, mechanism: mechanism == "EXTERNAL")
        self.server = Gio.DBusServer.new_sync(
            "unix:path=" + path, Gio.DBusServerFlags.NONE, Gio.dbus_generate_guid(), observer
        )
        self.server.connect("new-connection", self.accepted)
        self.server.start()
        return "unix:path=" + path

    def register(self, endpoint):
        path = "/com/velloren/EndPointHandling"
        proxy = Gio.DBusProxy.new_sync(self.bus, 0, None, REGISTRY, path, path[1:].replace("/", "."), None)
        if not proxy.registerListenerEndpoint("(ss)", endpoint, MAIN_APP):
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
parser.add_argument("--reply", default="list", choices=["list", "not-strings", "many"])
MainApp(parser.parse_args()).run()
