#!/usr/bin/python3
# Writes the limits that a unit of systemd sets to system calls as filters for bwrap.
# usage: system_call_limits.py UNIT ALLOWED-CALLS-FILE FORBIDDEN-USES-FILE
import configparser
import errno
import socket
import subprocess
import sys

from seccomp import ALLOW, ERRNO, MASKED_EQ, NE, Arch, Arg, SyscallFilter, resolve_syscall

WRITABLE, EXECUTABLE = 2, 4


def calls_in(group):
    listing = subprocess.run(["systemd-analyze", "syscall-filter", group], check=True, capture_output=True, text=True)
    for name in map(str.strip, listing.stdout.split("\n    ")[2:]):
        yield from calls_in(name) if name.startswith("@") else [name]


unit = configparser.RawConfigParser(strict=False)
unit.read(sys.argv[1])
allowed, forbidden = SyscallFilter(ERRNO(errno.EPERM)), SyscallFilter(ALLOW)
for call in calls_in(unit["Service"]["SystemCallFilter"]):
    if resolve_syscall(Arch(), call) >= 0:  # else of another architecture
        allowed.add_rule(ALLOW, call)
family = getattr(socket, unit["Service"]["RestrictAddressFamilies"])
forbidden.add_rule(ERRNO(errno.EAFNOSUPPORT), "socket", Arg(0, NE, family))
if unit["Service"].getboolean("MemoryDenyWriteExecute"):
    both = WRITABLE | EXECUTABLE
    forbidden.add_rule(ERRNO(errno.EPERM), "mmap", Arg(2, MASKED_EQ, both, both))
    forbidden.add_rule(ERRNO(errno.EPERM), "mprotect", Arg(2, MASKED_EQ, EXECUTABLE, EXECUTABLE))
for limits, file in zip((allowed, forbidden), sys.argv[2:]):
    limits.export_bpf(open(file, "wb"))
