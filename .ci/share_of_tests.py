#!/usr/bin/env python3
"""Prints how much of the C++ and Python are tests, without blank lines and comments; fails above a third."""
import subprocess
import sys

MOST = 33  # whole per cents


def lines(*patterns):
    listed = subprocess.run(["git", "ls-files", *patterns], check=True, capture_output=True, text=True)
    count = 0
    for source in listed.stdout.split():
        comment = "#" if source.endswith(".py") else "//"
        with open(source, encoding="utf-8") as text:
            count += sum(1 for line in map(str.strip, text) if line and not line.startswith(comment))
    return count


tests = lines("Tests/*.cpp", "Tests/*.h", "Tests/*.py")
everything = lines("*.cpp", "*.h", "*.py")
print(f"Tests are {tests} of {everything} lines, {100 * tests / everything:.1f} % (at most {MOST}).")
sys.exit(100 * tests // everything > MOST)
