"""The page that shows where the days went, as a person with a browser meets it."""
import datetime
import json
import os
import sqlite3
import unittest
import urllib.request
from contextlib import closing
from pathlib import Path

from support.activity import Uploaded
from support.scene import Scene
from support.webdriver import Browser

NOON = datetime.datetime.now().astimezone().replace(hour=12, minute=0, second=0, microsecond=0)


def wire(moment):
    return moment.astimezone(datetime.timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ")


class ActivityPage(Scene):
    def setUp(self):
        self.running = self.service()
        self.key = self.running.key
        self.uploaded = Uploaded(self.running)
        self.browser = Browser()
        self.addCleanup(self.browser.stop)

    def upload(self, start, idle, applications, seconds=60):
        body = {
            "periodStart": wire(start), "periodEnd": wire(start + datetime.timedelta(seconds=seconds)), "totalIdleSeconds": idle,
            "applications": applications}
        request = urllib.request.Request(
            f"{self.running.origin}/api/activity", json.dumps(body).encode(),
            {"Authorization": f"Bearer {self.key}", "Content-Type": "application/json"}, method="POST")
        with urllib.request.urlopen(request, timeout=30) as answer:
            self.assertEqual(answer.status, 201)

    def fill(self):
        """Two hours of today and one of yesterday."""
        for minute in range(120):
            start = NOON - datetime.timedelta(minutes=120 - minute)
            self.upload(start, 60 if minute % 20 == 0 else 0, [
                {"bundleIdentifier": "org.mozilla.firefox", "name": "Firefox", "focusedSeconds": 35.5, "tabs": [
                    {"url": "https://docs.example/guide", "title": "Guide", "focusedSeconds": 20.5},
                    {"url": f"https://www.news.example/{minute % 7}", "title": f"News {minute % 7}", "focusedSeconds": 15}]},
                {"bundleIdentifier": "org.example.Editor", "name": "Editor & more", "focusedSeconds": 14.5},
                {"name": "tool", "focusedSeconds": 10}])
        for minute in range(60):
            start = NOON - datetime.timedelta(days=1, minutes=minute)
            self.upload(start, 0, [{"bundleIdentifier": "org.example.Editor", "name": "Editor & more", "focusedSeconds": 60}])

    def shown(self, table):
        """(name, seconds) of the rows of a table on the screen."""
        names = [name.splitlines()[0] for name in self.browser.texts(f"#{table} tbody th")]
        return list(zip(names, map(float, self.browser.attributes(f"#{table} tbody .time", "data-seconds"))))

    def stored(self, first, until):
        """The same from the database."""
        span = [moment.timestamp() * 1000 for moment in (first, until)]
        return self.uploaded.query(
            "SELECT name, sum(focused_seconds) AS total FROM application_uses JOIN applications ON applications.id = application"
            " WHERE started_at >= ? AND started_at < ? GROUP BY application ORDER BY total DESC", *span)

    def midnight(self, days=0):
        day = NOON.date() + datetime.timedelta(days=days)
        return datetime.datetime.combine(day, datetime.time()).astimezone()

    def test_the_numbers_on_the_screen_are_those_of_the_database(self):
        self.fill()
        self.browser.go(f"{self.running.origin}/")
        self.browser.follow(link="Where the day went")
        self.assertEqual(self.shown("applications"), self.stored(self.midnight(), self.midnight(1)))
        self.assertEqual(self.shown("sites"), [("docs.example", 120 * 20.5), ("news.example", 120 * 15.0)])
        self.assertEqual(self.shown("pages")[0], ("Guide", 120 * 20.5))
        self.assertEqual(self.browser.texts("#idle"), ["6 min"])
        self.assertEqual(self.browser.texts("#focused"), ["2 h"])

        self.browser.follow(link="7 days")
        self.assertEqual(self.shown("applications"), self.stored(self.midnight(-6), self.midnight(1)))
        self.browser.follow(link="Yesterday")
        self.assertEqual(self.shown("applications"), [("Editor & more", 3600.0)])
        self.browser.follow(link="Later")
        self.assertEqual(len(self.shown("applications")), 3)
        self.browser.follow(link="A year")
        self.assertEqual(self.shown("applications"), self.stored(self.midnight(-364), self.midnight(1)))

    def test_a_range_can_be_typed(self):
        self.fill()
        self.browser.go(f"{self.running.origin}/activity")
        day = NOON.date() - datetime.timedelta(days=1)
        for name in ("from", "to"):
            self.browser.type(f"input[name={name}]", day.strftime("%m%d%Y"))
        self.browser.follow(css=".chooser button")
        self.assertTrue(self.browser.url.endswith(f"?from={day}&to={day}"), self.browser.url)
        self.assertEqual(self.shown("applications"), [("Editor & more", 3600.0)])

    def test_the_chart_is_drawn_and_its_numbers_can_be_heard(self):
        self.fill()
        self.browser.go(f"{self.running.origin}/activity")
        # Each quarter of an hour has a column, of three applications.
        self.assertEqual(len(self.browser.attributes("#timeline g", "class")), 8)
        self.assertEqual(len(self.browser.attributes("#timeline rect.c0", "class")), 8)
        self.assertEqual(len(self.browser.attributes("#timeline rect.idle", "class")), 6)
        tree = self.browser.accessible_tree()
        self.assertIn(("image", "Timeline"), tree)
        self.assertIn(("rowheader", "Firefox"), tree)
        self.assertIn(("cell", "1 h 11 min"), tree)

        self.assertFalse(self.browser.evaluate("document.querySelector('details').open"))
        self.browser.click(css="summary")
        rows = self.browser.texts("#timeline-table tbody tr")
        self.assertEqual(len(rows), 8)
        focused = [float(seconds) for seconds in self.browser.attributes("#timeline-table tbody td:nth-of-type(1)", "data-seconds")]
        self.assertEqual(sum(focused), 120 * 35.5)

    def test_it_reads_in_the_light_and_in_the_dark(self):
        self.fill()
        self.browser.go(f"{self.running.origin}/activity")
        colours = {}
        for scheme in ("light", "dark"):
            self.browser.colours(scheme)
            colours[scheme] = [
                self.browser.evaluate(f"getComputedStyle(document.querySelector('{css}')).{name}")
                for css, name in (("body", "backgroundColor"), ("body", "color"), ("#timeline rect.c0", "fill"), ("#timeline text", "fill"))]
            if "ORVANTA_PICTURES" in os.environ:
                folder = Path(os.environ["ORVANTA_PICTURES"])
                folder.mkdir(parents=True, exist_ok=True)
                (folder / f"activity-{scheme}.png").write_bytes(self.browser.picture())
        for light, dark in zip(colours["light"], colours["dark"]):
            self.assertNotEqual(light, dark)

    def test_what_is_exported_is_what_is_stored(self):
        self.fill()
        self.browser.go(f"{self.running.origin}/activity")
        links = dict(zip(self.browser.texts("footer a"), self.browser.attributes("footer a", "href")))
        with urllib.request.urlopen(self.running.origin + links["JSON"], timeout=30) as answer:
            periods = json.load(answer)
        self.assertEqual(len(periods), 120)
        self.assertEqual(sum(period["totalIdleSeconds"] for period in periods), 360)
        with urllib.request.urlopen(self.running.origin + links["CSV"], timeout=30) as answer:
            lines = answer.read().decode().splitlines()
        self.assertEqual(len(lines), 1 + 120 * (1 + 3 + 2))


class LongExport(Scene):
    def test_a_long_export_takes_no_more_memory_than_a_short_one(self):
        service = self.service()
        count = 100_000
        with closing(sqlite3.connect(service.data / "orvanta-service.sqlite")) as database, database:
            database.execute("INSERT INTO applications (id, identity, name) VALUES (1, 'org.example.Editor', 'Editor')")
            first = int(NOON.timestamp()) - count * 60
            starts = [(number + 1, (first + number * 60) * 1000) for number in range(count)]
            database.executemany(
                "INSERT INTO activity_periods (id, started_at, ended_at, idle_seconds, received_at, digest) VALUES (?1, ?2, ?2 + 60000, 0, ?2, CAST(?1 AS BLOB))", starts)
            database.executemany("INSERT INTO application_uses (period, application, started_at, focused_seconds) VALUES (?1, 1, ?2, 60)", starts)

        def most_memory():
            status = Path(f"/proc/{service.process.pid}/status").read_text()
            return int(next(line for line in status.splitlines() if line.startswith("VmHWM")).split()[1]) * 1024

        def length_of(address):
            with urllib.request.urlopen(f"{service.origin}{address}", timeout=60) as answer:
                return sum(map(len, iter(lambda: answer.read(65536), b"")))

        today = NOON.date()
        for suffix in ("csv", "json"):
            length_of(f"/activity.{suffix}?from={today}")
            before = most_memory()
            length = length_of(f"/activity.{suffix}?from={today - datetime.timedelta(days=80)}&to={today}")
            self.assertGreater(length, 10_000_000)
            self.assertLess(most_memory() - before, length / 2)


if __name__ == "__main__":
    unittest.main()
