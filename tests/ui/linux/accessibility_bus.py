"""What a running program exposes for assistive technology, for the scripts of this folder."""

import sys
import time

sys.dont_write_bytecode = True  # the sources stay as they are

from gi.repository import Gio, GLib

ROOT = "/org/a11y/atspi/accessible/root"
ACCESSIBLE = "org.a11y.atspi.Accessible"
COMPONENT = "org.a11y.atspi.Component"
ENABLED, FOCUSED, SHOWING = 8, 12, 25
LIMIT = 4


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
        return {bit for bit in (ENABLED, FOCUSED, SHOWING) if (high << 32 | low) >> bit & 1}

    def extents(self):
        """Left, top, width and height on the screen."""
        return self.call(COMPONENT, "GetExtents", 0, signature="(u)")

    def take_focus(self):
        self.call(COMPONENT, "GrabFocus")


def connect():
    session = Gio.bus_get_sync(Gio.BusType.SESSION)
    address = session.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None,
                                None, Gio.DBusCallFlags.NONE, 2000, None).unpack()[0]
    flags = (Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT |
             Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION)
    return Gio.DBusConnection.new_for_address_sync(address, flags)


def windows_of(bus, wanted):
    """The windows of the programs whose name has `wanted` in it."""
    registry = Element(bus, ("org.a11y.atspi.Registry", ROOT))
    for program in registry.children():
        try:
            if wanted in program.name():
                yield from program.children()
        except GLib.Error:
            continue  # it has just ended


def showing(element):
    """The element and all below it that shows, with its states, parents first."""
    states = element.states()
    if SHOWING in states:
        yield element, states
        for child in element.children():
            yield from showing(child)


def within_limit(look):
    """The first result of `look` that holds something; none after four seconds."""
    deadline = time.monotonic() + LIMIT
    while time.monotonic() < deadline:
        try:
            if result := look():
                return result
        except GLib.Error:
            pass  # something has gone while it was asked
        time.sleep(0.05)
    return None
