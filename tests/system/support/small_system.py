"""What stands on the small system (tests/system/with-system): the package installed there, its services, and people with and
without a session at the screen."""
import contextlib
import os
import subprocess
import sys
import tempfile
from pathlib import Path

from .filtered import INTERFACE, NAME, PATH, Network, run
from .waiting import until

SERVICE = "orvanta-filterd.service"
BUILD = Path(os.environ["ORVANTA_BIN"]).parent


CALLER = f"""
import sys
from gi.repository import Gio, GLib
flags = Gio.DBusCallFlags.ALLOW_INTERACTIVE_AUTHORIZATION if sys.argv[3] == "True" else Gio.DBusCallFlags.NONE
try:
    answer = Gio.bus_get_sync(Gio.BusType.SYSTEM).call_sync(
        "{NAME}", "{PATH}", "{INTERFACE}", sys.argv[1], GLib.Variant.parse(None, sys.argv[2]), None, flags, 120000, None)
    print(answer.print_(False))
except GLib.Error as error:
    print(error.message)
"""


def package():
    """The Debian package of this build."""
    folder = tempfile.mkdtemp(prefix="orvanta-package-")
    run("cpack", "--config", BUILD / "CPackConfig.cmake", "-B", folder)
    return next(Path(folder).glob("*.deb"))


def dpkg(*arguments):
    run("dpkg", "--force-depends", "--log=/dev/null", *arguments)


def introduce_service():
    """The small system looks for units in one folder only. A link in it stands for the folder in which packages put them."""
    link = Path("/run/small-system", SERVICE)
    if not link.is_symlink():
        link.symlink_to(f"/usr/lib/systemd/system/{SERVICE}")


def systemctl(*arguments):
    return run("systemctl", *arguments)


def shown(name):
    """A property of the service, as systemd tells it."""
    return systemctl("show", SERVICE, f"--property={name}", "--value").strip()


def main_process():
    return int(shown("MainPID"))


def is_active():
    return shown("ActiveState") == "active"


def journal():
    return run("journalctl", f"--unit={SERVICE}", "--no-pager", "--quiet")


class InstalledNetwork(Network):
    """The network of the filter's scenes, with the installed daemon that systemd keeps, on the system bus."""

    BUS_ADDRESS = "unix:path=/run/dbus/system_bus_socket"

    def _open_bus(self):
        self._connect(self.BUS_ADDRESS)

    def start(self):
        systemctl("start", SERVICE)
        until(self._is_on_the_bus, "the daemon on the bus")

    def stop(self):
        systemctl("stop", SERVICE)

    def _is_on_the_bus(self):
        return self._has_owner()


class Person:
    """Somebody with an account here, at the screen or not: what they call on the bus."""

    _session = 6

    def __init__(self, name):
        run("useradd", "--no-create-home", "--shell", "/bin/sh", name)
        self.name = name
        self.number = int(run("id", "--user", name))
        self.session = None

    def sit_down(self):
        """A session at the screen, as the login manager would have noted it down. None runs here."""
        Person._session += 1
        self.session = str(Person._session)
        for kind, name, lines in (
                ("sessions", self.session, [f"UID={self.number}", f"USER={self.name}", "ACTIVE=1", "IS_DISPLAY=1", "STATE=active", "REMOTE=0", "TYPE=x11",
                                            "CLASS=user", "SEAT=seat0", f"SCOPE=session-{self.session}.scope"]),
                ("users", str(self.number), [f"NAME={self.name}", "STATE=active", f"DISPLAY={self.session}", f"SESSIONS={self.session}",
                                             f"ACTIVE_SESSIONS={self.session}", "SEATS=seat0", "ONLINE_SEATS=seat0"]),
                ("seats", "seat0", ["IS_SEAT0=1", "CAN_GRAPHICAL=1", f"ACTIVE={self.session}", f"ACTIVE_UID={self.number}", f"SESSIONS={self.session}",
                                    f"UIDS={self.number}"])):
            folder = Path("/run/systemd", kind)
            folder.mkdir(exist_ok=True)
            (folder / name).write_text("".join(f"{line}\n" for line in lines))

    def command(self, *command):
        """The words that run a command as that person; at the screen inside their session."""
        as_person = ["setpriv", f"--reuid={self.number}", f"--regid={self.number}", "--clear-groups", *command]
        return as_person if self.session is None else self.within_session(*as_person)

    def within_session(self, *command):
        """The words that run a command as root inside the session."""
        inside = 'for group in /sys/fs/cgroup/unified /sys/fs/cgroup/systemd /sys/fs/cgroup; do if [ -e "$group/cgroup.procs" ]; then ' \
                 'mkdir -p "$group/$0" && echo $$ >"$group/$0/cgroup.procs"; fi; done; exec "$@"'
        return ["sh", "-c", inside, f"user.slice/user-{self.number}.slice/session-{self.session}.scope", *command]

    def start_call(self, method, arguments="()", may_ask=False):
        """`arguments` as GLib writes them."""
        return subprocess.Popen(self.command(sys.executable, "-c", CALLER, method, arguments, str(may_ask)), stdout=subprocess.PIPE, text=True)

    def calls(self, method, arguments="()", may_ask=False):
        """What the daemon answered, or its error with the message."""
        return self.start_call(method, arguments, may_ask).communicate(timeout=120)[0].strip()


@contextlib.contextmanager
def rules_of_polkit(text):
    """Rules of this system's administrator, for a while."""
    path = Path("/etc/polkit-1/rules.d/10-scene.rules")
    path.write_text(text)
    os.chmod(path, 0o644)
    try:
        yield
    finally:
        path.unlink()
