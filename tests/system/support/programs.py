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


def scratch(name):
    """A new folder in the home of this desktop, which goes away with it."""
    return Path(tempfile.mkdtemp(prefix=f"{name}-", dir=os.environ["HOME"]))


class Process:
    """A program with its output kept; ended with the test. A value of None in `environment` takes the variable away."""

    def __init__(self, arguments, environment=None):
        self.output_file = scratch("output") / "output"
        variables = {**os.environ, **(environment or {})}
        with open(self.output_file, "wb") as output:
            self.process = subprocess.Popen(
                [str(argument) for argument in arguments],
                stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT,
                env={name: value for name, value in variables.items() if value is not None},
            )

    @property
    def pid(self):
        return self.process.pid

    @property
    def output(self):
        return self.output_file.read_text(encoding="utf-8", errors="replace")

    def runs(self):
        return self.process.poll() is None

    def wait(self, bound=30):
        """Its status when it has ended by itself."""
        return self.process.wait(bound)

    def kill(self):
        if self.runs():
            self.process.kill()
        self.process.wait()

    def stop(self):
        if self.runs():
            self.process.terminate()
            try:
                self.process.wait(30)
            except subprocess.TimeoutExpired:
                self.kill()
                raise AssertionError(f"it did not end on SIGTERM\n{self.output}") from None
        return self.process.returncode

    def pause(self):
        self.process.send_signal(signal.SIGSTOP)

    def resume(self):
        self.process.send_signal(signal.SIGCONT)


class Service:
    """orvanta-service on a free loopback port, with a data folder that outlives restarts."""

    def __init__(self, *options):
        self.data = scratch("service")
        self.options = options
        self.port = 0
        self.process = None
        self.start()

    def start(self):
        ready = self.data / "ready"
        ready.unlink(missing_ok=True)
        arguments = ["serve", "--port", self.port, "--data", self.data, "--ready-file", ready, *self.options]
        self.process = Process([BIN / "orvanta-service", *arguments])
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


_ITEM = ["service", "com.orvanta.focus", "account", "orvanta-api-key"]


def store_key(key):
    """Puts the API key into the keyring, as a user does with secret-tool."""
    subprocess.run(["secret-tool", "store", "--label=Orvanta Focus", *_ITEM], input=key, text=True, check=True)


def clear_key():
    subprocess.run(["secret-tool", "clear", *_ITEM], check=False)


def encoded_lists(applications=(), domains=()):
    """The synced file's content: `applications` are pairs of identifier and name."""
    records = [{"bundleIdentifier": identifier, "displayName": name} for identifier, name in applications]
    return json.dumps({"blockedDomains": list(domains), "blockedApplications": json.dumps(records)})


class Application(Process):
    """orvanta-focus, with a synced folder and settings of its own unless it is given some. `program` is another copy of it,
    `prefix` a command that starts it."""

    def __init__(self, *arguments, origin="http://127.0.0.1:9", applications=(), domains=(), environment=None, synced=None, config=None,
                 program=BIN / "orvanta-focus", prefix=()):
        self.synced = Path(synced or scratch("synced"))
        self.config = Path(config or scratch("config"))
        if applications or domains:
            self.write_lists(applications, domains)
        own = {"ORVANTA_CLOUD_DIRECTORY": str(self.synced), "ORVANTA_SERVICE_ORIGIN": origin, "XDG_CONFIG_HOME": str(self.config)}
        super().__init__([*prefix, program, *arguments], {**own, **(environment or {})})

    @property
    def synced_file(self):
        return self.synced / "orvanta-focus.json"

    def write_lists(self, applications=(), domains=()):
        """Puts the lists into the synced folder as another machine's sync tool does: whole, by renaming."""
        self.synced.mkdir(exist_ok=True)
        half = self.synced / ".transfer"
        half.write_text(encoded_lists(applications, domains))
        half.rename(self.synced_file)

    @property
    def settings_file(self):
        return self.config / "orvanta-focus" / "settings.json"

    def stored_lists(self):
        """The lists in the settings file, as (identifiers, domains); None for what is not there yet."""
        try:
            settings = json.loads(self.settings_file.read_text())
        except FileNotFoundError:
            return None, None
        encoded = settings.get("blockedApplications")
        identifiers = None if encoded is None else [record["bundleIdentifier"] for record in json.loads(encoded)]
        return identifiers, settings.get("blockedDomains")

    def wait_for_stored(self, identifiers, domains=()):
        until(
            lambda: self.stored_lists() == (list(identifiers), list(domains)),
            lambda: f"the settings hold {identifiers} and {domains}; they hold {self.stored_lists()}\n{self.output}",
        )

    def panels(self):
        """Every panel window of ours, shown or not."""
        return [window for window in x11.windows(pid=self.pid, visible=False) if x11.has_property(window, "_ORVANTA_PANEL")]

    def covers(self):
        """The panels that are shown now."""
        return [window for window in self.panels() if x11.is_viewable(window)]

    def ordinary_windows(self):
        """What is shown of us beside the panels."""
        return [window for window in x11.windows(pid=self.pid, name="Orvanta Focus") if window not in self.panels()]

    def own_window(self):
        """The ordinary window, once it is there."""
        return until(lambda: next(iter(self.ordinary_windows()), None), lambda: f"the window is there\n{self.output}")

    def wait_for_cover(self):
        return until(lambda: next(iter(self.covers()), None), lambda: f"the screen is covered\n{self.output}")

    def wait_for_no_cover(self):
        until(lambda: not self.covers(), lambda: f"the cover is gone\n{self.output}")
