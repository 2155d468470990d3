"""Real browsers with profiles of their own, and the pages that they show."""
import functools
import os
import signal
import subprocess
import threading
from http.server import SimpleHTTPRequestHandler, ThreadingHTTPServer

from .programs import scratch
from .waiting import until

_FIREFOX_SETTINGS = {
    "browser.shell.checkDefaultBrowser": False,
    "browser.aboutwelcome.enabled": False,
    "browser.tabs.warnOnClose": False,
    "datareporting.policy.dataSubmissionEnabled": False,
    "network.captive-portal-service.enabled": False,
    "network.connectivity-service.enabled": False,
    "app.update.enabled": False,
}
# Nothing of these leaves the machine.
CHROMIUM = [
    "--no-sandbox", "--password-store=basic", "--disable-background-networking", "--disable-component-update", "--disable-sync", "--no-first-run",
    "--no-default-browser-check",
]


class Pages:
    """A web site on a free loopback port; each page has its title and a frame with another."""

    def __init__(self, **titles):
        folder = scratch("pages")
        (folder / "frame.html").write_text("<title>Frame</title>frame")
        for name, title in titles.items():
            (folder / f"{name}.html").write_text(f"<!doctype html><meta charset=utf-8><title>{title}</title><h1>{title}</h1><iframe src=frame.html></iframe>")

        class Handler(SimpleHTTPRequestHandler):
            def log_message(self, *_):
                pass

        self.server = ThreadingHTTPServer(("127.0.0.1", 0), functools.partial(Handler, directory=folder))
        self.origin = f"http://127.0.0.1:{self.server.server_port}"
        threading.Thread(target=self.server.serve_forever, daemon=True).start()

    def url(self, name):
        return f"{self.origin}/{name}.html"

    def stop(self):
        self.server.shutdown()
        self.server.server_close()


def switch_accessibility_on():
    """As a screen reader does that starts. Before the browsers do: they look once for the bus, which its launcher starts when
    somebody asks where it is, and until then they are sent to one that has died."""
    for method, *arguments in [
        ("org.freedesktop.DBus.Properties.Set", "org.a11y.Status", "IsEnabled", "<true>"),
        ("org.a11y.Bus.GetAddress",),
    ]:
        subprocess.run(
            ["gdbus", "call", "--session", "--dest", "org.a11y.Bus", "--object-path", "/org/a11y/bus", "--method", method, *arguments],
            check=True, capture_output=True)


def kill_accessibility_bus():
    """The bus dies, and what would start it again at once, as after a crash. It is not of the session's other buses."""
    launcher = _owner("org.a11y.Bus")
    daemons = [int(pid) for pid in subprocess.run(["pgrep", "--parent", str(launcher)], capture_output=True, text=True).stdout.split()]
    assert daemons, "the launcher has started no bus"
    for pid in [launcher, *daemons]:
        os.kill(pid, signal.SIGKILL)
    until(lambda: not _owner("org.a11y.Bus"), "the accessibility bus is gone")


def _owner(name):
    """The process that owns a name on the session's bus; 0 if none does."""
    done = subprocess.run(
        ["gdbus", "call", "--session", "--dest", "org.freedesktop.DBus", "--object-path", "/", "--method",
         "org.freedesktop.DBus.GetConnectionUnixProcessID", name],
        capture_output=True, text=True)
    return int(done.stdout.split()[1].rstrip(",)")) if done.returncode == 0 else 0


def firefox(*urls):
    """The command that starts it with a tab for each address."""
    profile = scratch("firefox")
    lines = [f"user_pref({name!r}, {str(value).lower()});" for name, value in _FIREFOX_SETTINGS.items()]
    (profile / "user.js").write_text("\n".join(lines))
    return ["firefox-esr", "--no-remote", "--profile", profile, *urls]


def chromium(*urls):
    return ["chromium", "--force-renderer-accessibility", *CHROMIUM, f"--user-data-dir={scratch('chromium')}", *urls]
