#!/usr/bin/python3
"""Does to the agent what others on its session may do, again and again, and checks what comes of it.

usage: faults.py FAMILY TIMES FOLDER: a function below, and the folder of the agent's output
"""

import contextlib
import functools
import os
import pathlib
import random
import signal
import socket
import sqlite3
import sys
import threading
import time

import foreign_main_app as far
from foreign_main_app import Gio, GLib

FAMILY, TIMES, FOLDER = sys.argv[1], int(sys.argv[2]), sys.argv[3]
SEED = os.environ.get("VELLOREN_SEED") or str(random.randrange(10**9))
STORE = os.path.join(os.environ["XDG_DATA_HOME"], "velloren/meetings.sqlite3")
LEDGER = pathlib.Path(FOLDER, f"ledger-{os.getpid()}")
NOTHING = "No upcoming meetings"


def until(condition, what, pause=0.002):
    limit = time.monotonic() + 60
    while not condition():
        assert time.monotonic() < limit, f"{what} does not come about"
        GLib.MainContext.default().iteration(False)
        time.sleep(pause)


@functools.cache
def listed(title):
    entry = {"id": GLib.Variant("s", title), "title": GLib.Variant("s", title)}
    return GLib.Variant("(v)", (GLib.Variant("aa{sv}", [entry]),))


def title_in_store():
    return sqlite3.connect(STORE).execute("SELECT title FROM meeting").fetchone()[0]


# How a main app answers a question for meetings, what the agent logs of it, what its menu shows first (the store).
ANSWERS = {
    "good": (lambda call: call.return_value(listed(title_in_store())), "count = Optional(1)", None),
    "slow": (lambda call: GLib.timeout_add(200, call.return_value, listed("late")), "count = Optional(1)", "late"),
    "silent": (lambda call: None, "Fetching meetings from main app...", None),
    "dying": (lambda call: os._exit(1), "Main app is terminated", None),
    "refusing": (lambda call: call.return_dbus_error("a.b", "x" * 99999), "with error a.b", None),
    "lying": (lambda call: call.return_value(GLib.Variant("(v)", (GLib.Variant("t", 1),))), "count = nil", NOTHING),
    "huge": (lambda call: call.return_value(listed("x" * (20 << 20))), "cannot be read", NOTHING),
}

def main_app(manner, haste="later"):
    def note(*words):
        with LEDGER.open("a") as ledger:
            print(os.getpid(), *words, file=ledger)

    def called(connection, sender, path, interface, name, parameters, invocation):
        if name == "fetchUpcomingMeetings":
            ANSWERS[manner][0](invocation)
        else:
            note(*parameters.unpack())
            invocation.return_value(None)

    endpoint = far.listen(called, lambda: note("lets in"))
    registered = haste == "sooner" and far.register(endpoint)
    far.own_name()
    if not registered:
        far.register(endpoint)
    GLib.MainLoop().run()


# Starts main apps, in a process that never speaks D-Bus: the threads of one that did do not survive a fork.
def start_main_apps(orders):
    signal.signal(signal.SIGCHLD, signal.SIG_IGN)
    while order := orders.recv(4096):
        process = os.fork()
        if process == 0:
            main_app(*order.decode().split("\t"))
        orders.send(str(process).encode())
    os._exit(0)


peers, far_end = socket.socketpair()
if os.fork() == 0:
    peers.close()
    start_main_apps(far_end)
started = []


def start(*order):
    peers.send("\t".join(order).encode())
    started.append(int(peers.recv(100)))
    return started[-1]


bus = Gio.bus_get_sync(Gio.BusType.SESSION)


def call(name, path, interface, method, signature, *arguments):
    question = GLib.Variant(signature, arguments)
    return bus.call_sync(name, path, interface, method, question, None, 0, 30000, None).unpack()


item = functools.partial(call, far.MAIN_APP + ".menu", "/StatusNotifierItem", "org.kde.StatusNotifierItem")
menu = functools.partial(call, far.MAIN_APP + ".menu", "/StatusNotifierItem/Menu", "com.canonical.dbusmenu")


# The number and the label of the first entry of the menu.
def entry():
    number, properties, _ = menu("GetLayout", "(iias)", 0, -1, [])[1][2][0]
    return number, properties["label"]


def show():
    menu("AboutToShow", "(i)", 0)
    return entry()


def open_and_close():
    for _ in range(2):
        item("Activate", "(ii)", 0, 0)


def owner(name):
    daemon = ("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus")
    with contextlib.suppress(GLib.GError):
        return call(*daemon, "GetConnectionUnixProcessID", "(s)", name)[0]


def log():
    return pathlib.Path(FOLDER, "velloren-menu").read_text(errors="replace")


def kill(process):
    with contextlib.suppress(ProcessLookupError):
        os.kill(process, signal.SIGKILL)


def end(main_app):
    kill(main_app)
    until(lambda: owner(far.MAIN_APP) is None, "the end of the main app")


# The ledger: each request is for a meeting of its own; main apps note who asks to be let in, and what arrives.
requests = []


def request():
    name = str(len(requests) + 1)
    requests.append(name)
    with sqlite3.connect(STORE) as store:
        store.execute("UPDATE meeting SET id = ?, title = ?", (name, name))
    until(lambda: show()[1] == name, "the meeting in the menu")
    menu("Event", "(isvu)", entry()[0], "clicked", GLib.Variant("i", 0), 0)


def noted():
    return [tuple(line.split()[:2]) for line in LEDGER.read_text().splitlines()]


def arrives():
    until(lambda: requests[-1] in dict(map(reversed, noted())), "the latest request")


# A main app as it should be comes, gets what is due to it, and goes.
def deliver():
    process = start("good")
    request()
    arrives()
    end(process)


def check_ledger():
    let_in = {process for process, text in noted() if text == "lets"}
    arrived = [text for _, text in noted() if text != "lets"]
    assert arrived == sorted(set(arrived), key=int), "not in order, or not once"
    missing = set(requests) - set(arrived)
    text = log()
    for name in missing:
        # The latest that it was given to let the agent in, and ended thereafter.
        place = max(text.rfind(f"meeting {name} operation is immediately"), text.rfind(f"(withId: {name})"))
        given_to = text[:place].rpartition("/foreign-")[2].split()[0]
        assert given_to in let_in and "clearUpXPCConnection" in text[place:], f"request {name} is lost"
    print(f"{len(requests)} requests, {len(arrived)} arrived, {len(missing)} went with main apps that were killed")


def main_apps():
    for manner in [*ANSWERS] * TIMES:
        before = len(log())
        process = start(manner)
        request()
        _, text, label = ANSWERS[manner]
        until(lambda: show() and text in log()[before:], f"{text} of a main app that is {manner}", 0.5)
        until(lambda: entry()[1] == (label or requests[-1]), f"{label} of a main app that is {manner}")
        open_and_close()
        end(process)
        deliver()


def killed_main_apps():
    for _ in range(TIMES):
        time.sleep(random.uniform(0, 0.02))
        process = start("good", random.choice(["sooner", "sooner", "later"]))
        end_at_any_moment = threading.Timer(random.choice([0.02, 0.05, 0.1, 0.8]) * random.random(), kill, [process])
        end_at_any_moment.start()
        while end_at_any_moment.is_alive():
            time.sleep(random.uniform(0, 0.05))
            request()
    deliver()


def registries():
    for _ in range(TIMES):
        hung = owner(far.REGISTRY)
        os.kill(hung, signal.SIGSTOP)
        tries = log().count("Trying to establish")
        process = start("good")
        request()
        until(lambda: log().count("Trying to establish") > tries + 1, "the next attempt")
        os.kill(hung, signal.SIGCONT)
        arrives()
        kill(hung)
        end(process)
        deliver()


def openings():
    for _ in range(TIMES):
        open_and_close()


random.seed(SEED)
LEDGER.touch()
try:
    with sqlite3.connect(STORE) as filled:
        filled.execute("DELETE FROM meeting")
        filled.execute("INSERT INTO meeting VALUES('0', '0', NULL, 4000000000)")
    until(lambda: entry()[1] == "0", "what the store holds, in a menu that is not about to show")
    globals()[FAMILY]()
    check_ledger()
    print(f"{TIMES} times {FAMILY}, seed {SEED}")
finally:
    for process in started:
        kill(process)
