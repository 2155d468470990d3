"""The extension's form for GNOME Shell 45 and later, which no shell here loads: as a module, on a bus, with the shell played."""
import os
import subprocess
import unittest
from pathlib import Path

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

from support.programs import scratch  # noqa: E402
from support.waiting import until  # noqa: E402

HERE = Path(__file__).resolve().parent
LIBRARIES = ":".join(map(str, [*Path("/usr/lib").glob("*/mutter-*"), Path("/usr/lib/gnome-shell")]))
NAME, PATH = "com.orvanta.Focus.Desktop", "/com/orvanta/Focus/Desktop"
EDITOR, TERMINAL = "org.example.Editor.desktop", "window:2"


class ModuleForm(unittest.TestCase):
    def setUp(self):
        folder = scratch("extension")
        subprocess.run([HERE.parent.parent / "packaging/gnome-extension/make-extension", "45", folder], check=True)
        self.log = open(scratch("log") / "log", "w+", encoding="utf-8")
        self.addCleanup(self.log.close)
        self.shell = subprocess.Popen(
            ["gjs", "-m", HERE / "support/shell_45.js", folder], stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=self.log, text=True,
            env={**os.environ, "GI_TYPELIB_PATH": LIBRARIES, "LD_LIBRARY_PATH": LIBRARIES})
        self.addCleanup(self.end)
        self.assertEqual(self.shell.stdout.readline(), "ready\n", self.said())
        self.bus = Gio.bus_get_sync(Gio.BusType.SESSION)
        self.activations = []
        number = self.bus.signal_subscribe(
            None, NAME, "Activated", PATH, None, Gio.DBusSignalFlags.NONE, lambda *what: self.activations.append(what[5].unpack()[0]))
        self.addCleanup(self.bus.signal_unsubscribe, number)

    def end(self):
        self.shell.stdin.close()
        self.shell.wait(30)
        self.shell.stdout.close()

    def said(self):
        self.log.seek(0)
        return self.log.read()

    def tell(self, order, listening=1):
        self.shell.stdin.write(f"{order}\n")
        self.shell.stdin.flush()
        self.assertEqual(self.shell.stdout.readline(), f"done, {listening} listening\n", self.said())

    def call(self, method, arguments=None, interface=NAME):
        return self.bus.call_sync(NAME, PATH, interface, method, arguments, None, Gio.DBusCallFlags.NO_AUTO_START, 20000, None).unpack()[0]

    def has_owner(self):
        return self.bus.call_sync("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameHasOwner",
                                  GLib.Variant("(s)", (NAME,)), None, Gio.DBusCallFlags.NONE, 20000, None).unpack()[0]

    def wait_for_activations(self, ids):
        context = GLib.MainContext.default()

        def told():
            while context.iteration(False):
                pass
            return [window["id"] for window in self.activations] == ids

        until(told, lambda: f"{ids} are told; {self.activations}\n{self.said()}")

    def enable(self):
        self.tell("enable")
        until(self.has_owner, lambda: f"the extension has its name\n{self.said()}")

    def test_it_tells_what_is_there_and_hides_it(self):
        self.enable()
        editor = self.call("Frontmost")
        self.assertEqual(editor, {"id": EDITOR, "class": "editor", "instance": "editor-instance", "role": "", "pid": 7,
                                  "x": 10, "y": 20, "width": 300, "height": 200})
        told = {window["id"]: (window["hidden"], window["skips-taskbar"]) for window in self.call("Applications")}
        self.assertEqual(told, {EDITOR: (False, False), TERMINAL: (False, False)})
        self.assertEqual(self.call("Hide", GLib.Variant("(s)", (TERMINAL,))), 1)
        self.assertEqual(self.call("Hide", GLib.Variant("(s)", ("unknown.desktop",))), 0)
        told = {window["id"]: window["hidden"] for window in self.call("Applications")}
        self.assertEqual(told, {EDITOR: False, TERMINAL: True})
        self.assertEqual(self.call("Get", GLib.Variant("(ss)", (NAME, "Version")), "org.freedesktop.DBus.Properties"), 1)

    def test_it_tells_activations_but_not_those_of_our_panels(self):
        self.enable()
        for name in ("terminal", "cover", "none", "editor"):
            self.tell(f"activate {name}")
        self.wait_for_activations([TERMINAL, EDITOR])
        self.tell("activate cover")
        self.assertEqual(self.call("Frontmost")["id"], TERMINAL)  # what is beneath
        self.tell("activate none")
        self.assertEqual(self.call("Frontmost"), {})

    def test_disabled_it_leaves_nothing_behind_and_can_be_enabled_again(self):
        self.enable()
        self.tell("disable", listening=0)
        until(lambda: not self.has_owner(), "the name is free")
        self.enable()
        self.tell("activate editor")
        self.wait_for_activations([EDITOR])


if __name__ == "__main__":
    unittest.main(verbosity=2)
