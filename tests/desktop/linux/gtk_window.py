#!/usr/bin/python3
"""A GTK window for the tests: one widget of each kind asked for, and the focus in the first.

Usage: gtk_window.py TITLE KIND...
Prints "ready" once it is up. A line "focus N" on standard input moves the focus to widget N.
"""

import sys

import gi

gi.require_version("Gtk", "3.0")
gi.require_version("Atk", "1.0")
from gi.repository import Atk, GLib, Gtk  # noqa: E402


def text_view(editable, role=None):
    view = Gtk.TextView(editable=editable)
    view.get_buffer().set_text("Some text\nof two lines")
    if role is not None:
        view.get_accessible().set_role(role)
    return view


def combo_box():
    box = Gtk.ComboBoxText()
    box.append_text("one")
    box.set_active(0)
    return box


def tree(cells_editable):
    rows = Gtk.ListStore(str)
    for row in range(2000):
        rows.append([f"row {row}"])
    view = Gtk.TreeView(model=rows)
    cell = Gtk.CellRendererText(editable=cells_editable)
    view.append_column(Gtk.TreeViewColumn("Rows", cell, text=0))
    view.set_cursor(Gtk.TreePath.new_first())
    scrolled = Gtk.ScrolledWindow()
    scrolled.add(view)
    scrolled.target = view
    return scrolled


KINDS = {
    "entry": lambda: Gtk.Entry(text="Some text"),
    "read-only-entry": lambda: Gtk.Entry(text="Some text", editable=False),
    "password": lambda: Gtk.Entry(text="secret", visibility=False),
    "text": lambda: text_view(True),
    "read-only-text": lambda: text_view(False),
    "terminal": lambda: text_view(False, Atk.Role.TERMINAL),
    "web-page": lambda: text_view(False, Atk.Role.DOCUMENT_WEB),
    "web-editor": lambda: text_view(True, Atk.Role.DOCUMENT_WEB),
    "heading": lambda: text_view(False, Atk.Role.HEADING),
    "label": lambda: Gtk.Label(label="Some text", selectable=True),
    "link": lambda: text_view(False, Atk.Role.LINK),
    "check-box": lambda: Gtk.CheckButton(label="On"),
    "radio-button": lambda: Gtk.RadioButton(label="This"),
    "toggle-button": lambda: Gtk.ToggleButton(label="On"),
    "button": lambda: Gtk.Button(label="Press"),
    "slider": lambda: Gtk.Scale.new_with_range(Gtk.Orientation.HORIZONTAL, 0, 10, 1),
    "spin-button": lambda: Gtk.SpinButton.new_with_range(0, 10, 1),
    "combo-box": combo_box,
    "tree": lambda: tree(False),
    "sheet": lambda: tree(True),
}


def main():
    window = Gtk.Window(title=sys.argv[1], default_width=500, default_height=300)
    box = Gtk.Box(orientation=Gtk.Orientation.VERTICAL)
    window.add(box)
    targets = []
    for kind in sys.argv[2:]:
        widget = KINDS[kind]()
        box.pack_start(widget, kind in ("tree", "sheet"), True, 0)
        targets.append(getattr(widget, "target", widget))
    if targets:
        targets[0].grab_focus()

    def obey(stream, condition):
        line = stream.readline()
        if not line:
            return False
        targets[int(line.split()[1])].grab_focus()
        return True

    GLib.io_add_watch(sys.stdin, GLib.IO_IN | GLib.IO_HUP, obey)
    window.connect("destroy", Gtk.main_quit)
    window.connect("map-event", lambda *_: print("ready", flush=True))
    window.show_all()
    Gtk.main()


main()
