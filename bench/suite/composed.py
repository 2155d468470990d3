"""What a Wayland compositor has composed, seen by the means that each of them gives: a line of the first display, from edge to edge
through its middle. A compositor's frame is composed as a whole or not at all, so the line tells of all of it.

Each watch answers look(), the colours (left, middle, right) of now, and between begin() and painted() looks out for the
first frame in which a cover is painted; painted() is the moment of that frame, in nanoseconds of the monotonic clock.
Where the compositor tells when it made the blocked application's window the active one, activated() is that moment.
"""
import json
import os
import subprocess
import threading
import time
from pathlib import Path

from gi.repository import Gio, GLib

from . import processes, scene

MIDNIGHT = 0x131A29
BLOCKED_COLOUR = 0xE03020
OTHER_COLOUR = 0xC0C0C0
WIDTH, HEIGHT = 1920, 1080


def is_covered(line):
    left, middle, right = line
    return left == MIDNIGHT and right == MIDNIGHT and middle not in (MIDNIGHT, BLOCKED_COLOUR, OTHER_COLOUR)


class ScreencopyWatch:
    """wlroots hands each frame that it composes to whoever asks, with the moment at which it did."""

    RESOLUTION = "the compositor stamps its frames itself"

    def __init__(self):
        self.program = subprocess.Popen([scene.BIN / "screencopy_watch"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        processes.put_first(self.program.pid)

    def _answer(self):
        line = self.program.stdout.readline()
        if not line:
            raise RuntimeError("screencopy_watch ended")
        return json.loads(line)

    def _ask(self, command):
        self.program.stdin.write(f"{command}\n")
        self.program.stdin.flush()
        return self._answer()

    def look(self):
        return self._ask("look")["line"]

    def begin(self):
        self._ask("watch")

    def activated(self):
        return None

    def painted(self):
        return self._answer()["painted"]

    def stop(self):
        self.program.stdin.close()
        self.program.wait(scene.BOUND)


class ScreenshotWatch:
    """KWin takes a picture of a part of the screen while it composes its next frame, and sends it through a pipe. The moment is the one
    at which the answer is here."""

    RESOLUTION = "a frame is known when its picture has come over the bus"

    def __init__(self):
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        self.bus = Gio.DBusConnection.new_for_address_sync(os.environ["DBUS_SESSION_BUS_ADDRESS"], flags, None, None)
        self.thread = None
        self.found = None

    def _line(self):
        """(the colours, the moment)"""
        reading, writing = os.pipe()
        descriptors = Gio.UnixFDList.new()
        handle = descriptors.append(writing)
        os.close(writing)
        with open(reading, "rb") as pipe:
            answer, _ = self.bus.call_with_unix_fd_list_sync(
                "org.kde.KWin", "/org/kde/KWin/ScreenShot2", "org.kde.KWin.ScreenShot2", "CaptureArea",
                GLib.Variant("(iiuua{sv}h)", (0, HEIGHT // 2, WIDTH, 1, {}, handle)), None, Gio.DBusCallFlags.NONE, 20000, descriptors, None,
            )
            moment = time.monotonic_ns()
            del answer, descriptors
            pixels = pipe.read()
        colours = [int.from_bytes(pixels[4 * x : 4 * x + 3], "little") for x in (0, WIDTH // 2, WIDTH - 1)]
        return colours, moment

    def look(self):
        return self._line()[0]

    def begin(self):
        self.found = None
        first = threading.Event()
        deadline = time.monotonic() + scene.BOUND

        def watch():
            while time.monotonic() < deadline:
                line, moment = self._line()
                first.set()
                if is_covered(line):
                    self.found = moment
                    return

        self.thread = threading.Thread(target=watch, daemon=True)
        self.thread.start()
        if not first.wait(scene.BOUND):
            raise TimeoutError("KWin takes no picture")

    def activated(self):
        return None

    def painted(self):
        self.thread.join()
        if self.found is None:
            raise TimeoutError("waited in vain: a cover is painted")
        return self.found

    def stop(self):
        self.bus.close_sync(None)


class StageWatch:
    """GNOME Shell runs a script of ours, which looks at each frame just after it was composed."""

    RESOLUTION = "the compositor stamps its frames itself"

    def __init__(self):
        self.bus = Gio.bus_get_sync(Gio.BusType.SESSION)
        self.run(Path(__file__).with_name("stage_watch.js").read_text())

    def run(self, script):
        """What the script's last expression is, inside GNOME Shell; the driver of the tests has opened it for this."""
        answer = self.bus.call_sync(
            "org.gnome.Shell", "/org/gnome/Shell", "org.gnome.Shell", "Eval", GLib.Variant("(s)", (script,)), None, Gio.DBusCallFlags.NONE, 20000, None,
        )
        done, value = answer.unpack()
        if not done:
            raise RuntimeError(f"GNOME Shell runs no script: {value}")
        return json.loads(value) if value else None

    def look(self):
        self.run("global.orvantaWatch.look(); null")
        return scene.until(lambda: self.run("global.orvantaWatch.line"), "GNOME Shell tells colours")

    def begin(self):
        self.run("global.orvantaWatch.begin(); null")

    def activated(self):
        return self.run("global.orvantaWatch.activated") * 1000

    def painted(self):
        return scene.until(lambda: self.run("global.orvantaWatch.painted"), "a cover is painted") * 1000

    def stop(self):
        self.run("global.orvantaWatch.end(); null")
