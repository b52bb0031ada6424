#!/usr/bin/python3
"""Says where a control of a running program is on the screen, by the name that a screen reader has.

Usage: place_accessible.py NAME CONTROL [NUMBER]

NAME is a part of the program's name on the accessibility bus, CONTROL the whole name of a control
that shows and can be used, NUMBER which of them if there are several, counted from 1. Prints the
middle of the control: "X Y". One that is scrolled out of sight is given the focus, as a screen reader
does, which must bring it into view. Exit status 1 if there is no such control that stands still within
four seconds.
"""

import sys

from accessibility_bus import ENABLED, SHOWING, connect, windows_of, within_limit

# They may bear the name of a control, but nobody acts on them.
PASSIVE = {"label", "filler", "frame", "window", "dialog", "alert", "panel", "graphic",
           "scroll pane", "progress bar"}


def usable(element, states, wanted):
    return (ENABLED in states and element.name() == wanted and element.role() not in PASSIVE)


def contains(area, point):
    left, top, width, height = area
    return left <= point[0] < left + width and top <= point[1] < top + height


def places(element, wanted, sight=None):
    """Each control of that name below the element, with the area that it must be seen in."""
    states = element.states()
    if SHOWING not in states:
        return
    if usable(element, states, wanted):
        yield element, sight
    if element.role() == "layered pane":
        sight = element.extents()
    for child in element.children():
        yield from places(child, wanted, sight)


class Place:
    def __init__(self, program, control, number):
        self.bus = connect()
        self.program, self.control, self.number = program, control, number
        self.seen = None

    def find(self):
        found = [place for window in windows_of(self.bus, self.program)
                 for place in places(window, self.control)]
        if len(found) < self.number:
            return None
        element, sight = found[self.number - 1]
        left, top, width, height = element.extents()
        middle = left + width // 2, top + height // 2
        if sight and not contains(sight, middle):
            element.take_focus()
            return None
        return middle

    def look(self):
        """Where it is, once it has been there twice: windows move while they open."""
        before, self.seen = self.seen, self.find()
        return self.seen if self.seen == before else None


def main(program, control, number="1"):
    place = within_limit(Place(program, control, int(number)).look)
    if not place:
        return 1
    print(*place)
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
