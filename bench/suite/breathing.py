"""The breathing screen, covering a display: its CPU time and its frames, as the X server and the renderer count them."""
import os
import re
import time
from contextlib import contextmanager
from pathlib import Path

from . import processes, scene
from .table import Row

AIM = 10.0  # % of a core

# The renderer's own line for each frame that it makes, whether it can be seen or not.
FRAME_LINES = {"QT_LOGGING_RULES": "qt.scenegraph.time.renderloop.debug=true"}
FRAME_LINE = re.compile(r"frame rendered", re.IGNORECASE)


def _server():
    """The process id of this desktop's X server, which stands beside the folder of its logs."""
    return int((Path(os.environ["ORVANTA_DESKTOP_LOGS"]).parent / "server.pid").read_text())


@contextmanager
def _client(name):
    with scene.running("xterm", "-name", name, "-class", name):
        window = scene.until(lambda: scene.windows("--class", f"^{name}$"), f"the window of {name} is there")[0]
        scene.activate(window)
        yield window


class Covered:
    """Our application while it covers the display; hide() brings another application's window to the front."""

    def __init__(self, program, other):
        self.program = program
        self.other = other
        self.cover = scene.until(lambda: scene.visible(program), "the display is covered")[0]

    def hide(self):
        scene.activate(self.other)
        scene.until(lambda: not scene.visible(self.program), "the cover is gone")
        time.sleep(2)  # for what is made ahead of the next time

    def frames_made(self):
        return len(FRAME_LINE.findall(self.program.output))


@contextmanager
def _covered(environment=None):
    scene.install_desktop_entries()
    with scene.focus("--focus-active", close_window=True, environment=environment) as program:
        with _client(scene.OTHER) as other, _client(scene.BLOCKED):
            covered = Covered(program, other)
            time.sleep(4)  # after two seconds nobody looks after the cover any more
            yield covered


def _cost(pid, seconds, during):
    """(% of a core of the application, of the X server, what `during` returned)"""
    server = _server()
    before, server_before, begin = processes.cpu(pid), processes.cpu(server), time.monotonic()
    result = during()
    elapsed = time.monotonic() - begin
    return 100 * (processes.cpu(pid) - before) / elapsed, 100 * (processes.cpu(server) - server_before) / elapsed, result


def _painted(covered, seconds):
    return scene.run("frame_counter", "--seconds", seconds, "--window", covered.cover)[0]["frames"]


def measure(options):
    seconds = max(10, options.duration // 3)
    rows = []
    with _covered() as covered:
        used, server, frames = _cost(covered.program.pid, seconds, lambda: _painted(covered, seconds))
        rows.append(Row(f"breathing screen, {scene.tool('xdotool', 'getdisplaygeometry').replace(' ', 'x')}, over {seconds} s", f"{used:.1f} % of a core",
                        aim=f"<= {AIM:.0f} %", reached=used <= AIM))
        rows.append(Row("the X server meanwhile", f"{server:.1f} % of a core"))
        options.note(f"breathing: {frames / seconds:.1f} frames/s")
        covered.hide()
        hidden_use, _, _ = _cost(covered.program.pid, seconds, lambda: time.sleep(seconds))
        options.note(f"breathing: hidden, {hidden_use:.2f} % of a core")

    with _covered(FRAME_LINES) as covered:
        before = covered.frames_made()
        time.sleep(2)
        shown = covered.frames_made() - before
        assert shown > 0, "the renderer does not say what it does; then silence proves nothing"
        covered.hide()
        before = covered.frames_made()
        time.sleep(seconds)
        hidden = covered.frames_made() - before
    rows.append(Row(f"frames while hidden, over {seconds} s", str(hidden), aim="0", reached=hidden == 0))

    reduced = Path(os.environ["XDG_CONFIG_HOME"]) / "kdeglobals"
    reduced.write_text("[KDE]\nAnimationDurationFactor=0\n")
    try:
        with _covered(FRAME_LINES) as covered:
            before = covered.frames_made()
            painted = _painted(covered, seconds)
            still = covered.frames_made() - before
    finally:
        reduced.unlink()
    rows.append(Row(f"frames with reduced motion, shown, over {seconds} s (screen, renderer)", f"{painted}, {still}", aim="0", reached=painted == 0 and still == 0))
    return rows
