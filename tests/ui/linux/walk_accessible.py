#!/usr/bin/python3
"""Walks what a running program exposes for assistive technology, as a screen reader does.

Usage: walk_accessible.py NAME

NAME is a part of the program's name on the accessibility bus. Prints one line for each element of
its windows that shows: the role and the name, joined by a tab, and "*" at the end of a line whose
element has the focus. Exit status 1 if there is no such program, or it shows nothing, within five
seconds.
"""

import sys
import time

from gi.repository import Gio, GLib

ROOT = "/org/a11y/atspi/accessible/root"
ACCESSIBLE = "org.a11y.atspi.Accessible"
FOCUSED, SHOWING = 12, 25
LIMIT = 5


def connect():
    session = Gio.bus_get_sync(Gio.BusType.SESSION)
    address = session.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None,
                                None, Gio.DBusCallFlags.NONE, 2000, None).unpack()[0]
    flags = (Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT |
             Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION)
    return Gio.DBusConnection.new_for_address_sync(address, flags)


class Element:
    def __init__(self, bus, reference):
        self.bus = bus
        self.name_on_bus, self.path = reference

    def call(self, interface, method, *arguments, signature=None):
        parameters = GLib.Variant(signature, arguments) if signature else None
        return self.bus.call_sync(self.name_on_bus, self.path, interface, method, parameters, None,
                                  Gio.DBusCallFlags.NONE, 2000, None).unpack()[0]

    def get(self, interface, name):
        return self.call("org.freedesktop.DBus.Properties", "Get", interface, name, signature="(ss)")

    def children(self):
        return [Element(self.bus, child) for child in self.call(ACCESSIBLE, "GetChildren")]

    def name(self):
        return self.get(ACCESSIBLE, "Name")

    def role(self):
        return self.call(ACCESSIBLE, "GetRoleName")

    def states(self):
        low, high = self.call(ACCESSIBLE, "GetState")
        return high << 32 | low


def walk(element, lines):
    states = element.states()
    if not states >> SHOWING & 1:
        return
    lines.append(f"{element.role()}\t{element.name()}" + (" *" if states >> FOCUSED & 1 else ""))
    for child in element.children():
        walk(child, lines)


def windows_of(bus, wanted):
    registry = Element(bus, ("org.a11y.atspi.Registry", ROOT))
    for program in registry.children():
        try:
            if wanted in program.name():
                yield from program.children()
        except GLib.Error:
            continue  # it has just ended


def main(wanted):
    bus = connect()
    deadline = time.monotonic() + LIMIT
    while time.monotonic() < deadline:
        lines = []
        try:
            for window in windows_of(bus, wanted):
                walk(window, lines)
        except GLib.Error:
            lines = []  # something has gone while it was asked
        if lines:
            print("\n".join(lines))
            return 0
        time.sleep(0.05)
    return 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
