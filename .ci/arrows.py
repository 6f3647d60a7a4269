#!/usr/bin/env python3
"""Fails where a source includes a room that its own room does not lead to.

A room is a folder of sources. The table has one line per room: the rooms that it may include, each with all that
that one may include. `main.cpp` files choose the backends and may include any; tests and benchmarks may as well.
"""
import os
import re
import subprocess
import sys

ARROWS = {
    "Platform/Foundation": [],
    "Platform/Link": ["Platform/Foundation"],
    "Platform/Link/DBus": ["Platform/Link"],
    "Platform/Views": ["Platform/Foundation"],
    "Platform/Desktop": ["Platform/Views"],
    "Platform/Freedesktop/Windowing": ["Platform/Desktop"],
    "Platform/Freedesktop/Windowing/X11": ["Platform/Freedesktop/Windowing"],
    "Platform/Freedesktop/Windowing/Wayland": ["Platform/Freedesktop/Windowing"],
    "Platform/Freedesktop/Bus": ["Platform/Foundation"],
    "Platform/Freedesktop/Tray": ["Platform/Freedesktop/Windowing/X11", "Platform/Freedesktop/Bus"],
    "Platform/Freedesktop/Session": ["Platform/Desktop", "Platform/Freedesktop/Bus"],
    "Platform/Freedesktop/Backends": [
        "Platform/Freedesktop/Session",
        "Platform/Freedesktop/Tray",
        "Platform/Freedesktop/Windowing/Wayland",
        "Platform/Freedesktop/Windowing/X11",
    ],
    "Services": ["Platform/Foundation"],
    "Services/Local": ["Services"],
    "Shared": ["Services", "Platform/Desktop", "Platform/Link"],
    "CrashReporting": ["Services", "Platform/Desktop"],
    "VellorenMenu": ["CrashReporting", "Shared"],
    "Companions/RegistryDaemon": ["Shared", "Platform/Link/DBus"],
    "Companions/MainAppStandIn": ["Shared", "Services/Local"],
}
ANYWHERE = ("Tests", "Benchmarks")


def reach(room):
    return {room}.union(*map(reach, ARROWS[room]))


def main():
    wrong = 0
    sources = subprocess.run(["git", "ls-files", "*.h", "*.cpp"], check=True, capture_output=True, text=True)
    for source in sources.stdout.split():
        room = os.path.dirname(source)
        if room.split("/")[0] in ANYWHERE or os.path.basename(source) == "main.cpp":
            continue
        if room not in ARROWS:
            sys.exit(f"{source}: the room {room} has no line in the table of {sys.argv[0]}")
        with open(source, encoding="utf-8") as text:
            for number, line in enumerate(text, 1):
                include = re.match(r'#include "(.+)/[^/"]+"', line)
                if include and include[1] not in reach(room):
                    print(f"{source}:{number}: {room} does not lead to {include[1]}")
                    wrong += 1
    return 1 if wrong else 0


sys.exit(main())
