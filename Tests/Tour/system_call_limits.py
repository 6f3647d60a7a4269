#!/usr/bin/python3
"""Writes the limits that a unit of systemd sets to system calls as filters for bwrap.

usage: system_call_limits.py UNIT ALLOWED-CALLS-FILE FORBIDDEN-USES-FILE
"""
import configparser
import errno
import socket
import subprocess
import sys

from seccomp import ALLOW, ERRNO, MASKED_EQ, NE, Arg, SyscallFilter

WRITABLE, EXECUTABLE = 2, 4


def calls_in(group):
    listing = subprocess.run(["systemd-analyze", "syscall-filter", group], check=True, capture_output=True, text=True)
    for name in listing.stdout.split("\n    ")[2:]:
        yield from calls_in(name.strip()) if name.startswith("@") else [name.strip()]


def main(unit, allowed_file, forbidden_file):
    service = configparser.RawConfigParser(strict=False)
    service.optionxform = str
    service.read(unit)
    service = service["Service"]
    allowed = SyscallFilter(ERRNO(errno.EPERM))
    for name in calls_in(service["SystemCallFilter"]):
        try:
            allowed.add_rule(ALLOW, name)
        except RuntimeError:
            pass  # of another architecture
    forbidden = SyscallFilter(ALLOW)
    family = getattr(socket, service["RestrictAddressFamilies"])
    forbidden.add_rule(ERRNO(errno.EAFNOSUPPORT), "socket", Arg(0, NE, family))
    if service.getboolean("MemoryDenyWriteExecute"):
        both = WRITABLE | EXECUTABLE
        forbidden.add_rule(ERRNO(errno.EPERM), "mmap", Arg(2, MASKED_EQ, both, both))
        forbidden.add_rule(ERRNO(errno.EPERM), "mprotect", Arg(2, MASKED_EQ, EXECUTABLE, EXECUTABLE))
    for limits, file in ((allowed, allowed_file), (forbidden, forbidden_file)):
        with open(file, "wb") as written:
            limits.export_bpf(written)


main(*sys.argv[1:])
