#!/usr/bin/python3
"""Splits the only screen of a TigerVNC server into two, side by side.

usage: split_screen.py SOCKET WIDTH HEIGHT, of each
"""
import socket
import struct
import sys

server = socket.socket(socket.AF_UNIX)
server.connect(sys.argv[1])
width, height = map(int, sys.argv[2:])


def read(count):
    data = server.recv(count, socket.MSG_WAITALL)
    assert len(data) == count, "the server hung up"
    return data


def ask_desktop_size(incremental):
    """0 where the last change of the layout was made. It comes as a part of an asked-for picture."""
    server.send(struct.pack(">BBHHHH", 3, incremental, 0, 0, 1, 1))
    kind, parts = struct.unpack(">BxH", read(4))
    assert kind == 0, "no other message is expected"
    for _ in range(parts):
        _, result, _, _, encoding = struct.unpack(">HHHHi", read(12))
        assert encoding == EXTENDED_DESKTOP_SIZE
        read(16 * read(4)[0])
        return result


EXTENDED_DESKTOP_SIZE = -308
read(12)
server.send(b"RFB 003.008\n")
read(read(1)[0])
server.send(b"\x01")  # no authentication
assert read(4) == b"\0\0\0\0"
server.send(b"\x01")  # others may stay
read(20)
read(struct.unpack(">I", read(4))[0])
server.send(struct.pack(">BxHi", 2, 1, EXTENDED_DESKTOP_SIZE))
ask_desktop_size(0)
layout = struct.pack(">BxHHBx", 251, 2 * width, height, 2)
for screen in range(2):
    layout += struct.pack(">IHHHHI", screen, screen * width, 0, width, height, 0)
server.send(layout)
sys.exit(ask_desktop_size(1))
