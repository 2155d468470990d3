"""What the scenes of the activity tracker share."""
import json
import sqlite3
import subprocess
from contextlib import closing

from . import x11
from .programs import BIN
from .scene import Scene
from .waiting import until

# What these desktops run, as it is reported: identity and name.
FIREFOX = ("org.mozilla.firefox", "Firefox ESR")
CHROMIUM = ("com.google.Chrome", "Google Chrome")
TERMINAL = ("debian-xterm.desktop", "XTerm")


def printed_activity():
    """What the application would see of the user, now."""
    done = subprocess.run([BIN / "orvanta-focus", "--print-activity"], capture_output=True, text=True, check=True)
    return json.loads(done.stdout)


class Uploaded:
    """What has arrived in a service's database."""

    def __init__(self, service):
        self.file = service.data / "orvanta-service.sqlite"

    def query(self, sql, *arguments):
        with closing(sqlite3.connect(f"file:{self.file}?mode=ro", uri=True)) as database:
            return database.execute(sql, arguments).fetchall()

    def periods(self):
        """(start, end, idle seconds, focused seconds of all applications), in seconds, in order."""
        return self.query(
            "SELECT started_at / 1000.0, ended_at / 1000.0, idle_seconds,"
            " (SELECT coalesce(sum(focused_seconds), 0) FROM application_uses WHERE period = activity_periods.id)"
            " FROM activity_periods ORDER BY started_at")

    def applications(self):
        """Seconds by (identity, name)."""
        return {
            (identity, name): seconds for identity, name, seconds in self.query(
                "SELECT identity, name, sum(focused_seconds) FROM application_uses JOIN applications ON applications.id = application GROUP BY identity")
        }

    def pages(self):
        """Seconds by (identity of the application, address, title)."""
        return {
            (identity, url, title): seconds for identity, url, title, seconds in self.query(
                "SELECT identity, url, title, sum(focused_seconds) FROM page_uses JOIN web_pages ON web_pages.id = page"
                " JOIN applications ON applications.id = application GROUP BY identity, url")
        }


class ActivityScene(Scene):
    def tracker(self, service, sample, period, retry, key=None):
        """The tracker alone, with times in seconds."""
        program = BIN.parent / "tests" / "activity_tracker"
        return self.process(program, f"{service.origin}/api/activity", key or service.key, sample, period, retry)

    def wait_for_front(self, name, url=None):
        def is_seen():
            seen = printed_activity()
            return seen.get("frontmostApp", {}).get("name") == name and (url is None or seen.get("activeBrowserTab", {}).get("url") == url)

        until(is_seen, lambda: f"{name} is in front, with {url}: {printed_activity()}", 90)

    def first_window(self, name):
        """A window whose title fits."""
        return until(lambda: next(iter(x11.windows(name=name)), None), f"a window {name} is there", 90)
