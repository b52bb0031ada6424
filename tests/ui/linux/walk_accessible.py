#!/usr/bin/python3
"""Walks what a running program exposes for assistive technology, as a screen reader does.

Usage: walk_accessible.py NAME

NAME is a part of the program's name on the accessibility bus. Prints one line for each element of
its windows that shows: the role and the name, joined by a tab, and "*" at the end of a line whose
element has the focus. Exit status 1 if there is no such program, or it shows nothing, within four
seconds.
"""

import sys

from accessibility_bus import FOCUSED, connect, showing, windows_of, within_limit


def main(wanted):
    bus = connect()
    lines = within_limit(lambda: [
        f"{element.role()}\t{element.name()}" + (" *" if FOCUSED in states else "")
        for window in windows_of(bus, wanted) for element, states in showing(window)])
    if not lines:
        return 1
    print("\n".join(lines))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
