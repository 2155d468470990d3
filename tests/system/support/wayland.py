"""The Wayland desktops, seen and worked from outside, each by the means that its compositor gives to tests and tools."""
import functools
import io
import json
import os
import subprocess
import threading
from collections import namedtuple

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402
from PIL import Image  # noqa: E402
from Xlib import display  # noqa: E402
from Xlib.protocol import event  # noqa: E402

from .programs import scratch  # noqa: E402
from .waiting import until  # noqa: E402
from .wayland_wire import FakeInput, Outputs  # noqa: E402

# `frame` is (x, y, width, height) on the whole desktop.
Window = namedtuple("Window", "pid title is_hidden is_active frame")


class Desktop:
    """What the tests ask of every compositor. Applications are named by their process."""

    displays = [(0, 0, 1920, 1080), (1920, 0, 1280, 800)]

    def arrange(self, *scales):
        """Switches every display on with that scale, or off where it is None."""

    def window(self, pid):
        """The application's first window, or None."""
        return next((window for window in self.windows() if window.pid == pid), None)

    def window_of(self, process):
        return until(lambda: self.window(process.pid), lambda: f"{process.process.args} has a window\n{process.output}\n{self.windows()}")

    def is_in_front(self, pid):
        return any(window.pid == pid and window.is_active for window in self.windows())

    def is_hidden(self, pid):
        own = [window for window in self.windows() if window.pid == pid]
        return bool(own) and all(window.is_hidden for window in own)

    def display_of(self, pid):
        """The number of the display that holds the application's first window; None while it has none."""
        window = self.window(pid)
        return window and int(window.frame[0] >= self.displays[1][0])

    def put_on_second_display(self, pid):
        self.move_to_second_display(pid)
        until(lambda: self.display_of(pid) == 1, lambda: f"{pid} is on the second display: {self.windows()}")

    def hold_keyboard(self):
        """Has the seat have a keyboard from now on, as every user's has."""

    def pixels(self, places):
        """The colours at those places, as (red, green, blue)."""
        picture = self.picture()
        return [picture.getpixel(place) for place in places]

    def spots(self, places):
        """The same for a few places alone, sooner where that can be had."""
        return self.pixels(places)


class Sway(Desktop):
    def __init__(self):
        self.outputs = ["HEADLESS-1", "HEADLESS-2"]  # in the order of `displays`
        self.last_workspace = 20

    def _message(self, *arguments):
        done = subprocess.run(["swaymsg", "--socket", os.environ["ORVANTA_SWAY"], *arguments], capture_output=True, text=True, check=False)
        return done.stdout

    def _views(self, node):
        if node.get("pid") and not node.get("nodes"):
            yield node
        for child in [*node.get("nodes", []), *node.get("floating_nodes", [])]:
            yield from self._views(child)

    def windows(self):
        found = []
        for view in self._views(json.loads(self._message("-t", "get_tree", "--raw"))):
            frame = view["rect"]
            place = (frame["x"], frame["y"], frame["width"], frame["height"])
            found.append(Window(view["pid"], view["name"], not view["visible"], view["focused"], place))
        return found

    def _command(self, pid, command):
        assert "true" in self._message(f"[pid={pid}] {command}")

    def activate(self, pid):
        self._command(pid, "focus")

    def full_screen(self, pid):
        self._command(pid, "fullscreen enable")

    def leave_nothing_in_front(self):
        self.last_workspace += 1  # what has been left before may be where windows were opened since
        self._message(f"workspace {self.last_workspace}")

    def go_to_workspace(self, number):
        """The second one is empty until something is opened there."""
        self._message(("workspace number 1", "workspace number 7")[number])
        until(lambda: self.workspace() == number, "the workspace is switched")

    def workspace(self):
        first = next(known for known in json.loads(self._message("-t", "get_outputs", "--raw")) if known["name"] == self.outputs[0])
        return {"1": 0, "7": 1}[first["current_workspace"]]

    def move_to_second_display(self, pid):
        self._command(pid, f"move container to output {self.outputs[1]}")

    def reload(self):
        assert '"success": true' in self._message("reload")

    def chatter(self):
        """Gives whoever listens to what becomes of windows much to hear."""
        self._message("; ".join(f"mark --replace {word}" for word in ("one", "two") * 1000))

    def hold_keyboard(self):
        self.keyboard = subprocess.Popen(["wtype", "-s", "36000000"])

    def key(self, name):
        subprocess.run(["wtype", "-k", name], check=True)

    def picture(self):
        # Packing it takes a second and more.
        done = subprocess.run(["grim", "-t", "ppm", "-"], capture_output=True, check=True)
        return Image.open(io.BytesIO(done.stdout)).convert("RGB")


class SwayInX(Sway):
    """One whose displays are windows of another X server, each under a new name when it comes back."""

    def __init__(self):
        super().__init__()
        self.outputs = ["X11-1", "X11-2"]
        self.outer = display.Display(os.environ["ORVANTA_OUTER_DISPLAY"])
        self.outer_windows = self._outer_windows()

    def _outer_windows(self):
        """Oldest first."""
        return self.outer.screen().root.query_tree().children

    def _names(self):
        return [known["name"] for known in json.loads(self._message("-t", "get_outputs", "--raw")) if known["active"]]

    def _close(self, number):
        delete = (32, [self.outer.intern_atom("WM_DELETE_WINDOW"), 0, 0, 0, 0])
        window = self.outer_windows[number]
        window.send_event(event.ClientMessage(window=window, client_type=self.outer.intern_atom("WM_PROTOCOLS"), data=delete))
        self.outer.sync()
        until(lambda: self.outputs[number] not in self._names(), "the display is gone")
        self.outputs[number] = self.outer_windows[number] = None

    def _open(self, number):
        before = self._names()
        self._message("create_output")
        (self.outputs[number],) = until(lambda: set(self._names()) - set(before), "the display is there")
        (self.outer_windows[number],) = until(lambda: set(self._outer_windows()) - set(self.outer_windows), "its window is there")

    def arrange(self, *scales):
        left = 0
        for number, (scale, frame) in enumerate(zip(scales, self.displays)):
            if scale is None:
                if self.outputs[number]:
                    self._close(number)
                continue
            if not self.outputs[number]:
                self._open(number)
            width, height = frame[2:]
            self._message(f"output {self.outputs[number]} resolution {width}x{height} position {left} 0 scale {scale}")
            left += round(width / scale)


class _Bus:
    """Calls on the session's bus."""

    def __init__(self):
        self.bus = Gio.bus_get_sync(Gio.BusType.SESSION)

    def call(self, name, path, interface, method, arguments=None, reply=None):
        return self.bus.call_sync(name, path, interface, method, arguments, reply and GLib.VariantType(reply), Gio.DBusCallFlags.NONE, 20000, None)


class KWin(_Bus, Desktop):
    displays = [(0, 0, 1920, 1080), (1920, 0, 1920, 1080)]

    _ANSWER = '<node><interface name="com.orvanta.Test"><method name="Answer"><arg type="s" direction="in"/></method></interface></node>'

    def __init__(self):
        super().__init__()
        self.answer = None
        self.scripts = 0
        face = Gio.DBusNodeInfo.new_for_xml(self._ANSWER).interfaces[0]
        self.bus.register_object("/com/orvanta/Test", face, self._answered, None, None)
        self.input = None
        self.outputs = None

    def _answered(self, _bus, _sender, _path, _interface, _method, arguments, invocation):
        self.answer = json.loads(arguments.unpack()[0])
        invocation.return_value(None)

    def _scripting(self, method, arguments=None):
        return self.call("org.kde.KWin", "/Scripting", "org.kde.kwin.Scripting", method, arguments)

    def run(self, script, *values):
        """What the function body `script`, which has `windows` and `values`, returns inside KWin."""
        self.scripts += 1
        name = f"test_{self.scripts}"
        file = scratch("script") / f"{name}.js"
        file.write_text(
            f"var values = {json.dumps(values)};\nvar windows = workspace.clientList();\n"
            f"var result = (function () {{ {script} }})();\n"
            f'callDBus("{self.bus.get_unique_name()}", "/com/orvanta/Test", "com.orvanta.Test", "Answer", JSON.stringify(result === undefined ? null : result));\n'
        )
        self.answer = _PENDING
        self._scripting("loadScript", GLib.Variant("(ss)", (str(file), name)))
        self._scripting("start")
        context = GLib.MainContext.default()

        def answered():
            while context.iteration(False):
                pass
            return self.answer is not _PENDING

        until(answered, "KWin answers a script")
        self._scripting("unloadScript", GLib.Variant("(s)", (name,)))
        return self.answer

    def windows(self):
        told = self.run(
            "return windows.map(function (w) { return [w.pid, String(w.caption), w.minimized, w.active,"
            " [w.frameGeometry.x, w.frameGeometry.y, w.frameGeometry.width, w.frameGeometry.height]]; });"
        )
        # A layer's surface has no title.
        return [Window(*window[:4], tuple(round(number) for number in window[4])) for window in told if window[1]]

    def _each(self, pid, statement):
        self.run(f"windows.forEach(function (w) {{ if (w.pid === values[0] && String(w.caption)) {{ {statement} }} }});", pid)

    def activate(self, pid):
        self._each(pid, "w.minimized = false; workspace.activeClient = w;")

    def full_screen(self, pid):
        self._each(pid, "w.fullScreen = true;")

    def leave_nothing_in_front(self):
        self.run("windows.forEach(function (w) { w.minimized = true; });")

    def move_to_second_display(self, pid):
        self._each(pid, "workspace.sendClientToScreen(w, 1);")

    def go_to_workspace(self, number):
        self.run("workspace.desktops = 2; workspace.currentDesktop = values[0] + 1;", number)
        until(lambda: self.workspace() == number, "the workspace is switched")

    def workspace(self):
        return self.run("return workspace.currentDesktop;") - 1

    def arrange(self, *scales):
        self.outputs = self.outputs or Outputs()
        self.outputs.arrange(scales)

    def unload_script(self, name):
        return self._scripting("unloadScript", GLib.Variant("(s)", (name,))).unpack()[0]

    def reconfigure(self):
        self.call("org.kde.KWin", "/KWin", "org.kde.KWin", "reconfigure")

    def hold_keyboard(self):
        self.input = FakeInput()

    def key(self, name):
        self.input.press(name)

    def picture(self):
        return self._capture("CaptureWorkspace", "(a{sv}h)", ({"native-resolution": GLib.Variant("b", True)},))

    def spots(self, places):
        return [self._capture("CaptureArea", "(iiuua{sv}h)", (x, y, 1, 1, {})).getpixel((0, 0)) for x, y in places]

    def _capture(self, method, signature, arguments):
        reading, writing = os.pipe()
        descriptors = Gio.UnixFDList.new()
        handle = descriptors.append(writing)
        os.close(writing)
        pieces = []

        def read():
            while piece := os.read(reading, 1 << 20):
                pieces.append(piece)

        reader = threading.Thread(target=read)
        reader.start()
        answer, _ = self.bus.call_with_unix_fd_list_sync(
            "org.kde.KWin", "/org/kde/KWin/ScreenShot2", "org.kde.KWin.ScreenShot2", method,
            GLib.Variant(signature, (*arguments, handle)), None, Gio.DBusCallFlags.NONE, 20000, descriptors, None,
        )
        del descriptors
        reader.join()
        os.close(reading)
        told = answer.unpack()[0]
        size = (told["width"], told["height"])
        return Image.frombuffer("RGBA", size, b"".join(pieces), "raw", "BGRA", told["stride"], 1).convert("RGB")


class Gnome(_Bus, Desktop):
    KEYS = {"Return": 0xFF0D, "Escape": 0xFF1B, "Shift_L": 0xFFE1, "x": 0x78}

    def __init__(self):
        super().__init__()
        self.remote = None

    def _driver(self, method, arguments=None):
        return self.call("com.orvanta.Test.Driver", "/com/orvanta/Test/Driver", "com.orvanta.Test.Driver", method, arguments)

    def hold_keyboard(self):
        # The seat of a shell without a screen has one only while somebody works it from afar.
        if self.remote is None:
            name = "org.gnome.Mutter.RemoteDesktop"
            self.remote = self.call(name, "/org/gnome/Mutter/RemoteDesktop", name, "CreateSession").unpack()[0]
            self.call(name, self.remote, f"{name}.Session", "Start")
            self.key("Shift_L")  # the keyboard itself comes with the first key

    def windows(self):
        told = json.loads(self._driver("Windows").unpack()[0])
        return [
            Window(window["pid"], window["title"], window["isHidden"], window["isActive"], tuple(window["frame"]))
            for window in told if window["role"] != "orvanta-panel"
        ]

    def activate(self, pid):
        self._driver("Activate", GLib.Variant("(i)", (pid,)))

    def full_screen(self, pid):
        self._driver("FullScreen", GLib.Variant("(i)", (pid,)))

    def leave_nothing_in_front(self):
        self._driver("MinimiseAll")

    def move_to_second_display(self, pid):
        self._driver("ToDisplay", GLib.Variant("(ii)", (pid, 1)))

    def go_to_workspace(self, number):
        self._driver("ToWorkspace", GLib.Variant("(i)", (number,)))
        until(lambda: self.workspace() == number, "the workspace is switched")

    def workspace(self):
        return self._driver("Workspace").unpack()[0]

    def _display_configuration(self, method, arguments=None):
        name = "org.gnome.Mutter.DisplayConfig"
        return self.call(name, "/org/gnome/Mutter/DisplayConfig", name, method, arguments).unpack()

    def arrange(self, *scales):
        # Without this feature there are whole scales alone.
        subprocess.run(["gsettings", "set", "org.gnome.mutter", "experimental-features", "['scale-monitor-framebuffer']"], check=True)
        until(lambda: "supports-changing-layout-mode" in self._display_configuration("GetCurrentState")[3], "Mutter takes any scale")
        serial, monitors, _, _ = self._display_configuration("GetCurrentState")
        left, wanted = 0, []
        for monitor, scale in zip(monitors, scales):
            if scale is not None:
                connector, mode, width = monitor[0][0], monitor[1][0][0], monitor[1][0][1]
                wanted.append((left, 0, scale, 0, not wanted, [(connector, mode, {})]))
                left += round(width / scale)
        options = {"layout-mode": GLib.Variant("u", 1)}
        self._display_configuration("ApplyMonitorsConfig", GLib.Variant("(uua(iiduba(ssa{sv}))a{sv})", (serial, 1, wanted, options)))

    def key(self, name):
        for state in (True, False):
            self.call(
                "org.gnome.Mutter.RemoteDesktop", self.remote, "org.gnome.Mutter.RemoteDesktop.Session", "NotifyKeyboardKeysym",
                GLib.Variant("(ub)", (self.KEYS[name], state)),
            )

    def picture(self):
        return self._shoot("Screenshot", "(bbs)", (False, False))

    def spots(self, places):
        return [self._shoot("ScreenshotArea", "(iiiibs)", (x, y, 1, 1, False)).getpixel((0, 0)) for x, y in places]

    def _shoot(self, method, signature, arguments):
        file = scratch("picture") / "picture.png"
        done, used = self.call(
            "org.gnome.Shell.Screenshot", "/org/gnome/Shell/Screenshot", "org.gnome.Shell.Screenshot", method,
            GLib.Variant(signature, (*arguments, str(file))),
        ).unpack()
        assert done
        return Image.open(used).convert("RGB")

    def has_extension(self):
        name = GLib.Variant("(s)", ("com.orvanta.Focus.Desktop",))
        return self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameHasOwner", name).unpack()[0]

    def lock(self, is_locked):
        self._driver("Lock", GLib.Variant("(b)", (is_locked,)))

    def switch_extension(self, is_on):
        self._driver("Switch", GLib.Variant("(sb)", ("focus@orvanta.com", is_on)))


_PENDING = object()
COMPOSITOR = os.environ.get("ORVANTA_COMPOSITOR", "")


@functools.cache
def desktop():
    """The one that this test runs on."""
    found = {"sway": Sway, "sway-in-x": SwayInX, "kwin": KWin, "gnome": Gnome}[COMPOSITOR]()
    found.hold_keyboard()
    return found
