"""The programs under test, started as a user starts them."""
import json
import os
import signal
import subprocess
import tempfile
from pathlib import Path

from . import x11
from .waiting import until

BIN = Path(os.environ["ORVANTA_BIN"])

MIDNIGHT = (19, 26, 41)


class Process:
    """A program with its output kept; ended with the test."""

    def __init__(self, arguments, environment=None):
        self.output_file = tempfile.NamedTemporaryFile(prefix="output-", delete=False)
        self.process = subprocess.Popen(
            [str(argument) for argument in arguments],
            stdin=subprocess.DEVNULL, stdout=self.output_file, stderr=subprocess.STDOUT, env={**os.environ, **(environment or {})},
        )

    @property
    def pid(self):
        return self.process.pid

    @property
    def output(self):
        return Path(self.output_file.name).read_text(encoding="utf-8", errors="replace")

    def runs(self):
        return self.process.poll() is None

    def wait(self, bound=30):
        return self.process.wait(bound)

    def kill(self):
        if self.runs():
            self.process.kill()
        self.process.wait()

    def stop(self):
        if self.runs():
            self.process.terminate()
            try:
                self.process.wait(15)
            except subprocess.TimeoutExpired:
                self.kill()
                raise AssertionError("it did not end on SIGTERM")
        return self.process.returncode

    def pause(self):
        self.process.send_signal(signal.SIGSTOP)

    def resume(self):
        self.process.send_signal(signal.SIGCONT)


class Service:
    """orvanta-service on a free loopback port, with a data folder that outlives restarts."""

    def __init__(self):
        self.data = Path(tempfile.mkdtemp(prefix="service-"))
        self.port = 0
        self.process = None
        self.start()

    def start(self):
        ready = self.data / "ready"
        ready.unlink(missing_ok=True)
        self.process = Process([BIN / "orvanta-service", "serve", "--port", self.port, "--data", self.data, "--ready-file", ready])
        until(lambda: (ready.exists() and ready.stat().st_size > 0) or not self.process.runs(), "the service is ready")
        assert self.process.runs(), self.process.output
        self.origin = ready.read_text().strip()
        self.port = int(self.origin.rpartition(":")[2])

    def command(self, *arguments):
        done = subprocess.run([BIN / "orvanta-service", *arguments, "--data", self.data], capture_output=True, text=True, check=True)
        return done.stdout.strip()

    @property
    def key(self):
        return self.command("key")

    def start_task(self, title="Write the report"):
        return self.command("task", "start", title)

    def end_task(self):
        return self.command("task", "done")

    def stop(self):
        self.process.stop()


def store_key(key):
    """Puts the API key into the keyring, as a user does with secret-tool."""
    subprocess.run(
        ["secret-tool", "store", "--label=Orvanta Focus", "service", "com.orvanta.focus", "account", "orvanta-api-key"],
        input=key, text=True, check=True,
    )


class Application(Process):
    """orvanta-focus, with a synced folder of its own."""

    def __init__(self, *arguments, origin="http://127.0.0.1:9", applications=(), domains=(), environment=None, synced=None):
        self.synced = Path(synced or tempfile.mkdtemp(prefix="synced-"))
        if applications or domains:
            self.write_lists(applications, domains)
        super().__init__(
            [BIN / "orvanta-focus", *arguments],
            {"ORVANTA_CLOUD_DIRECTORY": str(self.synced), "ORVANTA_SERVICE_ORIGIN": origin, **(environment or {})},
        )

    @property
    def synced_file(self):
        return self.synced / "orvanta-focus.json"

    def write_lists(self, applications=(), domains=()):
        """Puts the lists into the synced folder as another machine's sync tool does: whole, by renaming."""
        self.synced.mkdir(exist_ok=True)
        records = [{"bundleIdentifier": identifier, "displayName": name} for identifier, name in applications]
        half = self.synced / ".transfer"
        half.write_text(json.dumps({"blockedDomains": list(domains), "blockedApplications": json.dumps(records)}))
        half.rename(self.synced_file)

    @property
    def settings_file(self):
        return Path(os.environ["XDG_CONFIG_HOME"]) / "orvanta-focus" / "settings.json"

    def own_window(self):
        """The ordinary window, once it is there; covers are not counted."""
        return until(lambda: next(iter(x11.windows(pid=self.pid, name="^Orvanta Focus$")), None), "the window is there")

    def covers(self):
        """The windows that cover a display now: ours, viewable, and with no frame around them in the task bar."""
        own = [window for window in x11.windows(pid=self.pid) if "_NET_WM_STATE_SKIP_TASKBAR" in x11.run("xprop", "-id", str(window), "_NET_WM_STATE")]
        return [window for window in own if x11.is_viewable(window)]

    def wait_for_cover(self):
        return until(lambda: next(iter(self.covers()), None), f"the screen is covered\n{self.output}")

    def wait_for_no_cover(self):
        until(lambda: not self.covers(), "the cover is gone")
