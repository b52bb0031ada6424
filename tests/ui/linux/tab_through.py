#!/usr/bin/python3
"""Goes once through a running program's window with the Tab key, as somebody without a mouse does.

Usage: tab_through.py NAME [CONTROL]

NAME is a part of the program's name on the accessibility bus; the window, or the sheet in it, is
the one with the focus. Prints a line for each control that has been there, in the order of the
keys: the role and the name, joined by a tab. Then a line for each fault:

    "unnamed ROLE"            a control that screen readers have no name for
    "unreached ROLE NAME"     a control that can be used, and that Tab doesn't come to
    "unmarked ROLE NAME"      a control that looks the same with the focus as without it
    "unordered ROLE NAME"     a control that stands above the one before, and not beside it, if
                              there is more than one

Controls that exclude each other are one stop, and so is a list: the arrow keys go from one to the
next. Exit status 1 if nothing there gets the focus.

With CONTROL it only presses Tab until the control of that role and name, "ROLE NAME", has the
focus. Exit status 1 if none gets it.
"""

import subprocess
import sys
import time

import gi

gi.require_version("Gdk", "3.0")
from gi.repository import Gdk

from accessibility_bus import ENABLED, FOCUSED, SHOWING, connect, showing, windows_of, within_limit

CONTROLS = {"push button", "check box", "radio button", "combo box", "text", "link", "list item",
            "list", "slider", "spin button", "page tab", "menu item", "toggle button"}
WINDOWS = {"dialog", "alert message", "alert", "window", "frame"}
RING = 4
PATIENCE = 1.0


class Control:
    def __init__(self, element, parent):
        self.element, self.parent = element, parent
        self.path, self.role, self.name = element.path, element.role(), element.name()
        self.extents = self.place = element.extents()

    def described(self):
        return f"{self.role}\t{self.name}"


def has_focus_within(element, path=()):
    """The elements from the window to the one with the focus; none if it is elsewhere."""
    states = element.states()
    if SHOWING not in states:
        return None
    for child in element.children():
        if found := has_focus_within(child, (*path, element)):
            return found
    return (*path, element) if FOCUSED in states else None


def find_root(bus, program):
    """The innermost window or sheet around the focus."""
    for window in windows_of(bus, program):
        if path := has_focus_within(window):
            inner = [element for element in path if element.role() in WINDOWS]
            return inner[-1] if inner else window
    return None


def controls_of(element, parent=None):
    states = element.states()
    if SHOWING not in states:
        return
    if ENABLED in states and element.role() in CONTROLS:
        yield Control(element, parent)
    for child in element.children():
        yield from controls_of(child, element.path)


def picture():
    root = Gdk.get_default_root_window()
    return Gdk.pixbuf_get_from_window(root, 0, 0, root.get_width(), root.get_height())


def part(whole, extents):
    left, top = max(extents[0] - RING, 0), max(extents[1] - RING, 0)
    right = min(extents[0] + extents[2] + RING, whole.get_width())
    bottom = min(extents[1] + extents[3] + RING, whole.get_height())
    if right <= left or bottom <= top:
        return None
    return whole.new_subpixbuf(left, top, right - left, bottom - top).copy().get_pixels()


def wait_for(condition):
    deadline = time.monotonic() + PATIENCE
    while not (result := condition()) and time.monotonic() < deadline:
        time.sleep(0.02)
    return result


def stands_above(control, other):
    left, top, _, height = control.place
    other_left, other_top, other_width, _ = other.place
    return top + height <= other_top and left < other_left + other_width


class Walk:
    def __init__(self, root):
        self.root = root
        self.controls = list(controls_of(root))
        self.order, self.unmarked = [], []

    def focused(self):
        return next((each for each in self.controls if FOCUSED in each.element.states()), None)

    def press_tab(self):
        was = self.focused()
        subprocess.run(["xdotool", "key", "Tab"], check=True)
        wait_for(lambda: (now := self.focused()) is not None and now is not was)
        return self.focused()

    def go_to(self, wanted):
        now = self.focused()
        for _ in self.controls:
            if now is not None and f"{now.role} {now.name}" == wanted:
                return True
            now = self.press_tab()
        return False

    def judge(self, control, before):
        """Whether it shows that the control has got the focus, unless it has moved as well."""
        extents = control.element.extents()
        if extents == control.extents:
            unfocused = part(before, extents)
            if not wait_for(lambda: part(picture(), extents) != unfocused):
                self.unmarked.append(control)
        else:
            for each in self.controls:
                each.extents = each.element.extents()

    def run(self):
        for _ in range(2 * len(self.controls) + 2):
            before = picture()
            now = self.press_tab()
            if now in self.order:
                return
            if now is not None:
                self.order.append(now)
                self.judge(now, before)

    def is_reached(self, control):
        return any(control.path == each.path
                   or (control.role == "list item" and control.parent == each.path)
                   or (control.role == each.role == "radio button"
                       and control.parent == each.parent)
                   for each in self.order)

    def unordered(self):
        above = [control for before, control in zip(self.order, self.order[1:] + self.order[:1])
                 if stands_above(control, before)]
        return above if len(above) > 1 else []  # once it goes from the last to the first

    def report(self):
        for control in self.order:
            print(control.described())
        for control in self.controls:
            if not control.name:
                print(f"unnamed {control.role}")
            if not self.is_reached(control):
                print(f"unreached {control.role} {control.name}")
        for control in self.unordered():
            print(f"unordered {control.role} {control.name}")
        for control in self.unmarked:
            print(f"unmarked {control.role} {control.name}")


def main(program, control=None):
    bus = connect()
    root = within_limit(lambda: find_root(bus, program))
    if not root:
        return 1
    walk = Walk(root)
    if control:
        return 0 if walk.go_to(control) else 1
    walk.run()
    walk.report()
    return 0 if walk.order else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
