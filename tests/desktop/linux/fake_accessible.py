#!/usr/bin/python3
"""A program that exists only on the accessibility bus, for what real ones do too rarely.

Usage: fake_accessible.py KIND
Prints "ready" once it is registered. A line on standard input makes it announce its focus.

embedded   an entry in a page of a second program, which the first one's list of children hides
secluded   the same, but the page isn't among the children at all
loop       objects that are each other's children
garbage    references to nothing and answers of wrong types
"""

import sys

from gi.repository import Gio, GLib

ACTIVE, EDITABLE, FOCUSED, SHOWING, VISIBLE = 1, 7, 12, 25, 30
FILLER, FRAME, PANEL, APPLICATION, ENTRY, WEB_PAGE = 20, 23, 39, 75, 79, 95
ROOT = "/org/a11y/atspi/accessible/root"
INTERFACE = Gio.DBusNodeInfo.new_for_xml("""
<node><interface name="org.a11y.atspi.Accessible">
  <method name="GetChildren"><arg direction="out" type="a(so)"/></method>
  <method name="GetChildAtIndex"><arg direction="in" type="i"/><arg direction="out" type="(so)"/></method>
  <method name="GetState"><arg direction="out" type="au"/></method>
  <method name="GetRole"><arg direction="out" type="u"/></method>
  <property name="Parent" type="(so)" access="read"/>
</interface></node>""").interfaces[0]


def connect():
    session = Gio.bus_get_sync(Gio.BusType.SESSION)
    address = session.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None,
                                None, 0, -1, None).unpack()[0]
    flags = Gio.DBusConnectionFlags
    return Gio.DBusConnection.new_for_address_sync(
        address, flags.AUTHENTICATION_CLIENT | flags.MESSAGE_BUS_CONNECTION, None, None)


class Object:
    def __init__(self, bus, path, role, states, raw_states=None):
        self.bus = bus
        self.role = role
        self.states = raw_states or GLib.Variant(
            "(au)", ([sum(1 << state for state in states), 0],))
        self.reference = (bus.get_unique_name(), path)
        self.parent = ("", "/org/a11y/atspi/null")
        self.children = []
        self.hidden_child = None
        bus.register_object(path, INTERFACE, self.answer, self.read, None)

    def add(self, child):
        child.parent = self.reference
        self.children.append(child.reference)

    def answer(self, _bus, _sender, _path, _interface, method, _arguments, invocation):
        child = self.hidden_child or ("", "/org/a11y/atspi/null")
        invocation.return_value({
            "GetChildren": GLib.Variant("(a(so))", (self.children,)),
            "GetChildAtIndex": GLib.Variant("((so))", (child,)),
            "GetState": self.states,
            "GetRole": GLib.Variant("(u)", (self.role,)),
        }[method])

    def read(self, _bus, _sender, _path, _interface, _property):
        return GLib.Variant("(so)", self.parent)

    def announce_focus(self):
        self.bus.emit_signal(None, self.reference[1], "org.a11y.atspi.Event.Object", "StateChanged",
                             GLib.Variant("(siiva{sv})",
                                          ("focused", 1, 0, GLib.Variant("i", 0), {})))


def make_window(bus):
    root = Object(bus, ROOT, APPLICATION, [])
    window = Object(bus, "/window", FRAME, [ACTIVE, SHOWING, VISIBLE])
    root.add(window)
    return window


def embedded(window, is_child=True):
    view_bus = connect()
    frame = Object(window.bus, "/frame", FILLER, [])
    window.add(frame)
    page = Object(view_bus, "/page", WEB_PAGE, [FOCUSED, SHOWING, VISIBLE])
    if is_child:
        frame.hidden_child = page.reference
    page.parent = frame.reference
    entry = Object(view_bus, "/entry", ENTRY, [EDITABLE, FOCUSED, SHOWING, VISIBLE])
    page.add(entry)
    return entry


def secluded(window):
    return embedded(window, is_child=False)


def loop(window):
    first = Object(window.bus, "/first", PANEL, [SHOWING, VISIBLE])
    second = Object(window.bus, "/second", PANEL, [SHOWING, VISIBLE])
    window.add(first)
    first.add(second)
    second.children = [first.reference] * 3 + [window.reference]
    first.parent = second.reference
    return first


def garbage(window):
    bus = window.bus
    window.children = [("", "/nothing"), ("not a name", "/nothing"), ("org.nobody", "/nothing"),
                       (":9.999", "/nothing"), window.reference[:1] + ("/missing",),
                       ("", "/org/a11y/atspi/null")]
    for index, states in enumerate((GLib.Variant("(s)", ("focused",)), GLib.Variant("(au)", ([],)),
                                    GLib.Variant("(au)", ([0, 0, 0xFFFFFFFF],)),
                                    GLib.Variant("()", ()))):
        window.add(Object(bus, f"/odd{index}", 4_000_000_000, [], states))
    return Object(bus, "/odd", PANEL, [FOCUSED])


def main():
    bus = connect()
    window = make_window(bus)
    kinds = {"embedded": embedded, "secluded": secluded, "loop": loop, "garbage": garbage}
    focus = kinds[sys.argv[1]](window)
    bus.call_sync("org.a11y.atspi.Registry", ROOT, "org.a11y.atspi.Socket", "Embed",
                  GLib.Variant("((so))", ((bus.get_unique_name(), ROOT),)), None, 0, -1, None)

    def announce(stream, _):
        if not stream.readline():
            return False
        focus.announce_focus()
        return True

    GLib.io_add_watch(sys.stdin, GLib.IO_IN | GLib.IO_HUP, announce)
    print("ready", flush=True)
    GLib.MainLoop().run()


main()
