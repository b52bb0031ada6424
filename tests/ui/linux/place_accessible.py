#!/usr/bin/python3
"""Says where a control of a running program is on the screen, by the name that a screen reader has.

Usage: place_accessible.py NAME CONTROL [NUMBER]

NAME is a part of the program's name on the accessibility bus, CONTROL the whole name of a control
that shows and can be used, NUMBER which of them if there are several, counted from 1. Prints the
middle of the control, and of the window that it is in: "X Y X Y". Exit status 1 if there is no such
control that stands still within a second.
"""

import sys

from accessibility_bus import ENABLED, connect, showing, windows_of, within_limit

# They may bear the name of a control, but nobody acts on them.
PASSIVE = {"label", "filler", "frame", "dialog", "alert", "panel", "graphic", "scroll pane",
           "progress bar"}


def middle(element):
    left, top, width, height = element.extents()
    return left + width // 2, top + height // 2


class Place:
    def __init__(self, bus, program, control, number):
        self.bus, self.program, self.control, self.number = bus, program, control, number
        self.seen = None

    def find(self):
        matches = [(middle(element), middle(window))
                   for window in windows_of(self.bus, self.program)
                   for element, states in showing(window)
                   if ENABLED in states and element.name() == self.control
                   and element.role() not in PASSIVE]
        return matches[self.number - 1] if len(matches) >= self.number else None

    def look(self):
        """Where it is, once it has been there twice: windows move while they open."""
        before, self.seen = self.seen, self.find()
        return self.seen if self.seen == before else None


def main(program, control, number="1"):
    place = within_limit(Place(connect(), program, control, int(number)).look)
    if not place:
        return 1
    print(*place[0], *place[1])
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
