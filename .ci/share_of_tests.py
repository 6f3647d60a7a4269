#!/usr/bin/env python3
"""Prints how much of the C++, Python and shell are tests, without blank lines and comments; fails above a third."""
import subprocess
import sys

MOST = 33  # per cent


def kind(source):
    """What the file is written in; none where it is no code."""
    if source.endswith((".cpp", ".h")):
        return "C++"
    with open(source, "rb") as text:
        isScript = source.endswith((".py", ".sh")) or text.read(2) == b"#!"
    return "script" if isScript else None


def lines(*patterns):
    listed = subprocess.run(["git", "ls-files", *patterns], check=True, capture_output=True, text=True)
    count = 0
    for source in listed.stdout.splitlines():
        language = kind(source)
        if language is None:
            continue
        comment = "//" if language == "C++" else "#"
        with open(source, encoding="utf-8") as text:
            count += sum(1 for line in map(str.strip, text) if line and not line.startswith(comment))
    return count


tests = lines("Tests")
everything = lines()
print(f"Tests are {tests} of {everything} lines, {100 * tests / everything:.1f} % (at most {MOST}).")
sys.exit(100 * tests > MOST * everything)
