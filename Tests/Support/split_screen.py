#!/usr/bin/python3
"""Splits the only screen of a TigerVNC server, $DISPLAY, into two, side by side.

usage: split_screen.py SOCKET WIDTH HEIGHT, of each
"""
import socket
import struct
import subprocess
import sys
import time

width, height = map(int, sys.argv[2:])
server = socket.socket(socket.AF_UNIX)
server.connect(sys.argv[1])
server.send(b"RFB 003.008\n" + b"\x01" + b"\x01")  # no authentication, others may stay
layout = [struct.pack(">IHHHHI", screen, screen * width, 0, width, height, 0) for screen in range(2)]
server.send(struct.pack(">BxHi", 2, 1, -308))  # the server crashes without this word that layouts are understood
server.send(struct.pack(">BxHHBx", 251, 2 * width, height, len(layout)) + b"".join(layout))
while b"Monitors: 2" not in subprocess.check_output(["xrandr", "--listmonitors"]):
    time.sleep(0.05)
