"""The cover on one Wayland desktop: from the activation of a blocked application to the painted cover, and what the breathing cover costs."""
import json
import os
import random
import socket
import struct
import sys
import time
from contextlib import ExitStack, contextmanager
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent.parent / "tests" / "system"))
from support import wayland  # noqa: E402

from . import processes, scene  # noqa: E402
from .composed import HEIGHT, WIDTH, ScreencopyWatch, ScreenshotWatch, StageWatch, is_covered  # noqa: E402
from .breathing import AIM, FRAME_LINE, FRAME_LINES  # noqa: E402
from .table import Row, median, summary  # noqa: E402

PEERS = {
    "a window of bare Qt Quick": {"sway": "bare_quick_layer_cover", "kwin": "bare_quick_layer_cover", "gnome": "bare_quick_cover"},
    "a bare surface": {"sway": "bare_layer_cover", "kwin": "bare_layer_cover", "gnome": "bare_cover"},
}
WATCHES = {"sway": ScreencopyWatch, "kwin": ScreenshotWatch, "gnome": StageWatch}
NAMES = {"sway": "sway", "kwin": "KWin", "gnome": "GNOME"}


def _compositor():
    """The process that listens where Wayland clients connect."""
    with socket.socket(socket.AF_UNIX) as client:
        client.connect(os.path.join(os.environ["XDG_RUNTIME_DIR"], os.environ["WAYLAND_DISPLAY"]))
        return struct.unpack("=iII", client.getsockopt(socket.SOL_SOCKET, socket.SO_PEERCRED, 12))[0]


class Desk:
    """The desktop with the window of a blocked application, that of another one in front of it, and what looks at the screen."""

    def __init__(self, hands, watch, blocked, other, pipe):
        self.hands = hands
        self.watch = watch
        self.blocked = blocked
        self.other = other
        self.pipe = pipe

    def close(self, program):
        """Closes the program's own window, as its user would."""
        if wayland.COMPOSITOR == "sway":
            self.hands._message(f"[pid={program.pid}] kill")
        elif wayland.COMPOSITOR == "kwin":
            self.hands._each(program.pid, "w.closeWindow();")
        else:
            self.watch.run(
                f"global.get_window_actors().map(actor => actor.meta_window).filter(window => window.get_pid() === {program.pid})"
                ".forEach(window => window.delete(global.get_current_time())); null"
            )

    def shown(self, program):
        return [window for window in self.hands.windows() if window.pid == program.pid and not window.is_hidden]

    def tell_peer(self, word):
        os.write(self.pipe, word)

    def uncover(self):
        """Brings the other application to the front, which takes the cover away."""

        def is_uncovered():
            if not self.hands.is_in_front(self.other.pid):
                self.hands.activate(self.other.pid)
                self.tell_peer(b"h")
                return False
            return not is_covered(self.watch.look())

        self.hands.activate(self.other.pid)
        self.tell_peer(b"h")
        scene.until(is_uncovered, "the other application is in front, uncovered")

    def activations(self):
        return [json.loads(line)["activated"] for line in self.blocked.output.splitlines() if line.startswith("{")]

    def activate(self):
        """ms from the moment when the blocked application's window becomes the active one, as the compositor or the window tells, to the
        frame with the painted cover."""
        self.uncover()
        time.sleep(random.uniform(0.3, 0.4))  # no rhythm of what is watched falls into step with ours
        before = len(self.activations())
        self.watch.begin()
        self.hands.activate(self.blocked.pid)
        painted = self.watch.painted()
        told = scene.until(lambda: self.activations()[before:], "the window is told that it is active")[0]
        time.sleep(0.2)
        return (painted - (self.watch.activated() or told)) / 1e6

    def measure(self, count):
        return [self.activate() for _ in range(count)]


@contextmanager
def _desk():
    scene.install_desktop_entries()
    hands = wayland.desktop()
    name = Path(os.environ["HOME"]) / "told"
    os.mkfifo(name)
    with ExitStack() as stack:
        pipe = os.open(name, os.O_RDWR | os.O_NONBLOCK)
        stack.callback(os.close, pipe)
        windows = []
        for application, options in ((scene.BLOCKED, ("--colour", "E03020", "--tell", name)), (scene.OTHER, ("--colour", "C0C0C0"))):
            window = stack.enter_context(scene.running(scene.BIN / "wayland_window", "--application", application, *options))
            processes.put_first(window.pid)
            scene.until(lambda shown=window: hands.window(shown.pid), f"the window of {application} is there")
            windows.append(window)
        watch = WATCHES[wayland.COMPOSITOR]()
        stack.callback(watch.stop)
        yield Desk(hands, watch, *windows, pipe)


@contextmanager
def _animated():
    """With the movements that a user's GNOME has; the desktop of the tests leaves them out. Elsewhere nothing has to be changed."""
    if wayland.COMPOSITOR != "gnome":
        yield
        return
    setting = ("gsettings", "set", "org.gnome.desktop.interface", "enable-animations")
    scene.tool(*setting, "true")
    try:
        yield
    finally:
        scene.tool(*setting, "false")


@contextmanager
def _ours(desk, environment=None):
    with scene.focus("--focus-active", close_window=True, environment=environment, shown=desk.shown, close=desk.close) as program:
        yield program


@contextmanager
def _peer(desk, program):
    desk.uncover()
    # The peers know of layers only, or of X only, where both displays are one screen.
    platform = {"QT_QPA_PLATFORM": "xcb"} if wayland.COMPOSITOR == "gnome" else {}
    size = ("--width", WIDTH, "--height", HEIGHT)
    with scene.running(scene.BIN / program, "--told", Path(os.environ["HOME"]) / "told", *size, environment=platform) as peer:
        scene.until(lambda: "ready" in peer.output, f"{program} waits")
        scene.settle(peer.pid, 0.3)
        yield peer
        desk.uncover()


def _of_peers(desk, count):
    found = []
    for programs in PEERS.values():
        with _peer(desk, programs[wayland.COMPOSITOR]):
            found.append(desk.measure(count))
    return found


def _cover(desk, options):
    count = options.count or 40
    ours, quick, bare, first, first_quick, first_bare = [], [], [], [], [], []
    for _ in range(4):  # in turn, so that what else the machine does falls on all alike; the first of each turn is a row of its own
        with _ours(desk):
            values = desk.measure(1 + count // 4)
        first += values[:1]
        ours += values[1:]
        for all_values, firsts, others in zip((quick, bare), (first_quick, first_bare), _of_peers(desk, 1 + count // 4)):
            firsts += others[:1]
            all_values += others[1:]
    name = NAMES[wayland.COMPOSITOR]
    options.note(f"{name}: {desk.watch.RESOLUTION}, at most 60 a second; a time ends with a frame")

    def row(work, mine, peer, limit):
        return Row(work, summary(mine), summary(peer), summary(limit), f"{median(mine) / median(peer):.2f} / {median(mine) / median(limit):.2f}")

    rows = [
        row(f"activation to painted cover, {name} (median / 95 % / worst of {len(ours)})", ours, quick, bare),
        row(f"the first cover after a start, {name} (of {len(first)})", first, first_quick, first_bare),
    ]
    if wayland.COMPOSITOR == "gnome":
        with _animated():
            with _ours(desk):
                ours = desk.measure(count // 2)
            quick, bare = _of_peers(desk, count // 2)
        rows.append(row(f"the same, while {name} moves its windows (of {len(ours)})", ours, quick, bare))
    return rows


def _cost(pids, seconds):
    """% of a core that each tree of processes uses."""
    before, begin = [processes.cpu(pid) for pid in pids], time.monotonic()
    time.sleep(seconds)
    elapsed = time.monotonic() - begin
    return [100 * (processes.cpu(pid) - used) / elapsed for pid, used in zip(pids, before)]


def _breathing(desk, options):
    seconds = max(10, options.duration // 3)
    name = NAMES[wayland.COMPOSITOR]
    compositor = _compositor()
    desk.uncover()
    idle, = _cost([compositor], seconds)
    with _animated(), _ours(desk, FRAME_LINES) as program:
        def made():
            return len(FRAME_LINE.findall(program.output))

        desk.uncover()
        desk.activate()
        time.sleep(4)  # after that nobody looks after the cover any more
        before = made()
        used, composing = _cost([program.pid, compositor], seconds)
        frames = (made() - before) / seconds
        desk.uncover()
        time.sleep(2)  # for what is made ahead of the next time
        before = made()
        hidden, = _cost([program.pid], seconds)
        frames_hidden = made() - before
    assert frames > 0, "the renderer does not say what it does; then silence proves nothing"
    options.note(f"{name}: {frames:.1f} frames/s; without a cover the compositor uses {idle:.1f} % of a core, and we {hidden:.2f} %")
    return [
        Row(f"breathing screen, {name}, 1920x1080, over {seconds} s", f"{used:.1f} % of a core", aim=f"<= {AIM:.0f} %", reached=used <= AIM),
        Row(f"the compositor meanwhile, {name}", f"{composing:.1f} % of a core"),
        Row(f"frames while hidden, {name}, over {seconds} s", str(frames_hidden), aim="0", reached=frames_hidden == 0),
    ]


def measure(options):
    with _desk() as desk:
        return _cover(desk, options) + _breathing(desk, options)
