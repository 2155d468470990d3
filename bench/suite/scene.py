"""Programs on the virtual desktop that a measurement runs in: ours, and the peers."""
import json
import os
import subprocess
import sys
import tempfile
import time
from contextlib import contextmanager
from pathlib import Path

from . import processes

BIN = Path(os.environ["ORVANTA_BIN"])
BOUND = 60.0  # seconds that anything gets to happen, on a machine that is busy

BLOCKED = "orvanta-bench-blocked"
OTHER = "orvanta-bench-other"

# Nobody who is measured gets a screen reader's bridge: the desktop of the tests switches it on for all.
os.environ.pop("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", None)
os.environ["NO_AT_BRIDGE"] = "1"
# Nor authorities of their own, which hardly any desktop has: to read a whole file of them takes longer than a window does.
os.environ.pop("SSL_CERT_FILE", None)


def until(condition, what):
    """Polls `condition` until it is true and returns what it returned."""
    deadline = time.monotonic() + BOUND
    while not (result := condition()):
        if time.monotonic() > deadline:
            raise TimeoutError(f"waited in vain: {what}")
        time.sleep(0.02)
    return result


def run(program, *arguments, environment=None):
    """The lines of JSON that one of the measuring programs prints."""
    done = subprocess.run(
        [str(BIN / program), *map(str, arguments)], stdout=subprocess.PIPE, text=True, check=True, env={**os.environ, **(environment or {})}
    )
    return [json.loads(line) for line in done.stdout.splitlines()]


def tool(*command):
    """What a program prints; nothing where it finds nothing."""
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True).stdout.strip()


def windows(*criteria):
    """The visible windows that xdotool finds."""
    return [int(line) for line in tool("xdotool", "search", "--onlyvisible", "--all", *criteria).split()]


def activate(window):
    tool("wmctrl", "-i", "-a", hex(window))


class Program:
    """A program with its output kept."""

    def __init__(self, command, environment=None):
        self.output_file = Path(tempfile.mkdtemp(prefix="output-", dir=os.environ["HOME"])) / "output"
        with open(self.output_file, "wb") as output:
            self.process = subprocess.Popen(
                [str(part) for part in command], stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT, env={**os.environ, **(environment or {})}
            )

    @property
    def pid(self):
        return self.process.pid

    @property
    def output(self):
        return self.output_file.read_text(errors="replace")

    def check(self):
        """Raises if it has ended."""
        if self.process.poll() is not None:
            raise RuntimeError(f"{self.process.args[0]} ended by itself:\n{self.output}")

    def stop(self):
        self.process.terminate()
        try:
            self.process.wait(BOUND)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
            raise


@contextmanager
def running(*command, environment=None):
    """A program, ended at the end."""
    program = Program(command, environment)
    try:
        yield program
        program.check()
    finally:
        program.stop()


def settle(pid, quiet=1.0):
    """Waits until the process has used next to no CPU time for `quiet` seconds; what it does at its start is over then.
    A program that never rests is taken as it is after the bound."""
    deadline = time.monotonic() + BOUND
    while time.monotonic() < deadline:
        before = processes.cpu(pid)
        time.sleep(quiet)
        if processes.cpu(pid) - before < 0.01 * quiet:
            return


def peer(name):
    """A peer, started the way its package means it to be started."""
    if name == "safeeyes":  # it does not make this folder where XDG_CONFIG_HOME is not the usual one
        (Path(os.environ["XDG_CONFIG_HOME"]) / "safeeyes" / "style").mkdir(parents=True, exist_ok=True)
    return running(name)


def install_desktop_entries():
    """Makes applications of the probe's two windows. The folder gets an old date: one that changed just now is read
    again at each activation, which happens to nobody in a day's work."""
    folder = Path(os.environ["XDG_DATA_HOME"]) / "applications"
    folder.mkdir(parents=True, exist_ok=True)
    for name in (BLOCKED, OTHER):
        (folder / f"{name}.desktop").write_text(f"[Desktop Entry]\nType=Application\nName={name}\nExec={name}\nStartupWMClass={name}\n")
    long_ago = time.time() - 3600
    os.utime(folder, (long_ago, long_ago))


def visible(program):
    return windows("--pid", str(program.pid))


def _close(program):
    for window in visible(program):
        tool("wmctrl", "-i", "-c", hex(window))


@contextmanager
def focus(*arguments, close_window=False, environment=None, origin="http://127.0.0.1:9", shown=visible, close=_close):
    """Our application, settled, with BLOCKED on its list; with its window open, or closed by the user. `shown` gives the windows that a
    program shows on this desktop, `close` closes them."""
    with tempfile.TemporaryDirectory(prefix="synced-", dir=os.environ["HOME"]) as synced:
        blocked = [{"bundleIdentifier": f"{BLOCKED}.desktop", "displayName": "Blocked"}]
        Path(synced, "orvanta-focus.json").write_text(json.dumps({"blockedDomains": [], "blockedApplications": json.dumps(blocked)}))
        variables = {"ORVANTA_CLOUD_DIRECTORY": synced, "ORVANTA_SERVICE_ORIGIN": origin, **(environment or {})}
        with running(BIN / "orvanta-focus", *arguments, environment=variables) as program:
            until(lambda: shown(program), "the window is there")
            if close_window:
                # Once it listens; a window that is closed while it comes up stays.
                until(lambda: not shown(program) or close(program), "the window is closed")
            settle(program.pid)
            yield program


@contextmanager
def tls_service(*options):
    """The small HTTPS service of this folder, with a certificate made for this run. Yields (origin, environment for
    its clients, count), where count() asks it for {"handshakes", "requests"}."""
    with tempfile.TemporaryDirectory(prefix="tls-") as folder:
        certificate, key = f"{folder}/certificate.pem", f"{folder}/key.pem"
        subprocess.run(
            ["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes", "-days", "1", "-subj", "/CN=bench",
             "-addext", "subjectAltName=IP:127.0.0.1", "-keyout", key, "-out", certificate],
            check=True, capture_output=True,
        )
        service = subprocess.Popen(
            [sys.executable, Path(__file__).with_name("focus_service.py"), certificate, key, *options],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
        )
        try:
            def count():
                service.stdin.write("count\n")
                service.stdin.flush()
                return json.loads(service.stdout.readline())

            port = json.loads(service.stdout.readline())["port"]
            yield f"https://127.0.0.1:{port}", {"SSL_CERT_FILE": certificate}, count
        finally:
            service.terminate()
            service.wait(10)


@contextmanager
def polling_focus(**options):
    """Our application with a key, polling over HTTPS as it does for its users. Yields (program, count)."""
    subprocess.run(
        ["secret-tool", "store", "--label=bench", "service", "com.orvanta.focus", "account", "orvanta-api-key"], input="key", text=True, check=True
    )
    with tls_service() as (origin, environment, count):
        with focus(origin=origin, environment=environment, **options) as program:
            until(lambda: count()["requests"] > 0, "it polls")
            yield program, count
