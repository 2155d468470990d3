"""Where the day goes: what the user does on this desktop is found in the service's database, second by second."""
import os
import sys
import time
import unittest

from support import browsers, x11
from support.activity import ActivityScene, Uploaded, printed_activity
from support.programs import scratch, store_key
from support.waiting import until

FIREFOX = ("org.mozilla.firefox", "Firefox ESR")
CHROMIUM = ("com.google.Chrome", "Google Chrome")
TERMINAL = ("debian-xterm.desktop", "XTerm")
REFUSED = "API error: Connection refused"
DROPPED = "Warning: Dropping oldest pending data due to repeated failures"


class WhatIsSeen(ActivityScene):
    def test_the_program_prints_what_would_be_seen_and_ends(self):
        _, window = self.xterm()
        self.bring_to_front(window)
        self.wait_for_front(TERMINAL[1])
        seen = printed_activity()
        self.assertEqual(list(seen), ["timestamp", "idleSeconds", "frontmostApp", "runningApps"])
        self.assertRegex(seen["timestamp"], r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ$")
        self.assertEqual(seen["frontmostApp"], {"bundleIdentifier": TERMINAL[0], "name": TERMINAL[1], "isActive": True})
        self.assertIn(seen["frontmostApp"], seen["runningApps"])

    def test_applications_and_tabs_are_told_apart_to_the_second(self):
        pages = browsers.Pages(one="Page one é", two="Page two", three="Page three")
        self.addCleanup(pages.stop)
        browsers.switch_accessibility_on()
        service = self.service()
        uploaded = Uploaded(service)
        self.process(*browsers.firefox(pages.url("one"), pages.url("two")))
        firefox = self.first_window(".*Mozilla Firefox")
        self.process(*browsers.chromium(pages.url("three")))
        chromium = self.first_window(".*Chromium")
        _, terminal = self.xterm()

        self.bring_to_front(firefox)
        self.wait_for_front(FIREFOX[1], pages.url("one"))
        sample, period = 0.5, 4
        tracker = self.tracker(service, sample, period, 1)
        stays = {}

        def stay(key, seconds_of):
            """Stays with what is in front until enough of it has arrived; remembers how long that took."""
            start = time.monotonic()
            until(lambda: seconds_of().get(key, 0) >= 4, lambda: f"{key} has arrived: {seconds_of()}\n{tracker.output}", 90)
            stays[key] = time.monotonic() - start

        one = (FIREFOX[0], pages.url("one"), "Page one é")
        two = (FIREFOX[0], pages.url("two"), "Page two")
        three = (CHROMIUM[0], pages.url("three"), "Page three")
        stay(one, uploaded.pages)
        x11.run("xdotool", "key", "ctrl+Tab")
        stay(two, uploaded.pages)
        self.bring_to_front(chromium)
        stay(three, uploaded.pages)
        self.bring_to_front(terminal)
        stay(TERMINAL, uploaded.applications)
        self.assertEqual(tracker.stop(), 0, tracker.output)

        self.assertEqual(set(uploaded.pages()), {one, two, three})
        self.assertLessEqual({FIREFOX, CHROMIUM, TERMINAL}, set(uploaded.applications()))
        # Nothing counts for longer than it was in front, but for the sample at its beginning.
        for key, seconds in {**uploaded.pages(), **uploaded.applications()}.items():
            if key in stays:
                self.assertLessEqual(seconds, stays[key] + 3 * sample, key)
        # And every second of each period is someone's. Dates are whole seconds.
        for start, end, _, focused in uploaded.periods():
            self.assertGreaterEqual(end - start, period - 1)
            self.assertAlmostEqual(focused, end - start, delta=1.5)
        self.assertNotIn("error", tracker.output)

    def test_two_real_minutes_of_the_application(self):
        service = self.service()
        store_key(service.key)
        uploaded = Uploaded(service)
        focus = self.focus(origin=service.origin)
        focus.own_window()
        _, window = self.xterm()
        self.bring_to_front(window)
        start = time.time()
        until(lambda: len(uploaded.periods()) >= 2, lambda: f"two periods arrive: {uploaded.periods()}\n{focus.output}", 200)
        self.assertGreaterEqual(time.time() - start, 110)
        periods = uploaded.periods()[:2]
        for begin, end, idle, focused in periods:
            self.assertAlmostEqual(end - begin, 60, delta=8)
            self.assertAlmostEqual(focused, end - begin, delta=1.5)
            self.assertLessEqual(idle, end - begin + 1)
        self.assertGreaterEqual(periods[1][0], periods[0][1] - 1)
        self.assertGreaterEqual(uploaded.applications()[TERMINAL], 100)
        # Nobody has touched anything for nearly all of it.
        self.assertGreaterEqual(periods[1][2], 50)


class Idle(ActivityScene):
    def test_idle_time_counts_unless_an_agent_works(self):
        service = self.service()
        uploaded = Uploaded(service)
        self.xterm()
        period = 2

        def latest_idle():
            periods = uploaded.periods()
            return periods[-1][2] if periods else None

        tracker = self.tracker(service, 0.25, period, 1)
        until(lambda: (latest_idle() or 0) >= period - 1, lambda: f"idle time arrives: {uploaded.periods()}\n{tracker.output}")

        agent = scratch("agent") / "claude"
        agent.symlink_to(os.path.realpath(sys.executable))
        claude = self.process(agent, "-c", "while True: pass")
        until(lambda: latest_idle() == 0, lambda: f"nobody is idle while the agent works: {uploaded.periods()}\n{tracker.output}")
        claude.kill()
        until(lambda: latest_idle() >= period - 1, lambda: f"idle time counts again: {uploaded.periods()}")


class Absence(ActivityScene):
    def test_after_eleven_periods_without_a_service_ten_arrive_as_one(self):
        service = self.service()
        uploaded = Uploaded(service)
        self.xterm()
        key = service.key
        service.stop()
        period = 8
        start = time.time()
        tracker = self.tracker(service, 0.5, period, 1, key)
        until(lambda: DROPPED in tracker.output, lambda: f"the oldest is dropped\n{tracker.output}", 300)
        self.assertGreaterEqual(time.time() - start, 11 * period)
        service.start()
        until(uploaded.periods, lambda: f"a body arrives\n{tracker.output}")
        self.assertEqual(tracker.stop(), 0)

        first = uploaded.periods()[0]
        self.assertAlmostEqual(first[0], start + period, delta=4)
        self.assertGreaterEqual(first[1] - first[0], 10 * period - 1)
        self.assertLessEqual(first[1] - first[0], 10 * (period + 2))
        self.assertAlmostEqual(first[3], first[1] - first[0], delta=2)
        lines = tracker.output.splitlines()
        self.assertEqual(lines.count(DROPPED), 1, tracker.output)
        self.assertGreaterEqual(lines.count(REFUSED), 11)
        self.assertEqual(set(lines), {DROPPED, REFUSED}, tracker.output)


if __name__ == "__main__":
    unittest.main()
