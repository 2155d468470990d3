"""Where the day goes: what the user does on this desktop is found in the service's database, second by second."""
import os
import sys
import time
import unittest

from support import browsers, x11
from support.activity import CHROMIUM, FIREFOX, TERMINAL, ActivityScene, Uploaded, printed_activity
from support.programs import scratch
from support.waiting import until


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
                self.assertLessEqual(seconds, stays[key] + 3 * sample + 1, key)
                # The last period of a stay may not have arrived when it ended, and its page may have been looked for in vain once.
                self.assertGreaterEqual(seconds, stays[key] - period - 4, key)
        # And every second of each period is someone's. Dates are whole seconds, and the sample that closes a period may wait a
        # second for a browser's tab.
        for start, end, _, focused in uploaded.periods():
            self.assertGreaterEqual(end - start, period - 1)
            self.assertAlmostEqual(focused, end - start, delta=3)
        self.assertNotIn("error", tracker.output)


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


class AccessibilityBus(ActivityScene):
    """It carries the tab; here it dies under a tracker that is using it."""

    def test_without_it_samples_go_on_without_a_tab_and_the_tab_is_seen_again_when_it_is_back(self):
        pages = browsers.Pages(one="Page one", two="Page two")
        self.addCleanup(pages.stop)
        browsers.switch_accessibility_on()
        service = self.service()
        uploaded = Uploaded(service)
        self.process(*browsers.firefox(pages.url("one")))
        self.bring_to_front(self.first_window(".*Mozilla Firefox"))
        self.wait_for_front(FIREFOX[1], pages.url("one"))
        tracker = self.tracker(service, 0.25, 4, 1)  # pages of less than three seconds are not told

        def arrives(condition, what):
            until(condition, lambda: f"{what}: {uploaded.pages()} {uploaded.periods()}\n{tracker.output}", 90)

        arrives(lambda: uploaded.pages().get((FIREFOX[0], pages.url("one"), "Page one"), 0) >= 2, "the page is seen")

        browsers.kill_accessibility_bus()
        begun = len(uploaded.periods())
        arrives(lambda: len(uploaded.periods()) > begun, "the period in which it died arrives")
        seen = uploaded.pages()
        without = len(uploaded.periods())
        # One wait may fall into the first of these periods; none of them lacks a sample, and none has a page.
        arrives(lambda: len(uploaded.periods()) >= without + 3, "periods go on")
        self.assertEqual(uploaded.pages(), seen)
        self.assertEqual(set(uploaded.applications()), {FIREFOX})
        for start, end, _, focused in uploaded.periods()[without:]:
            self.assertAlmostEqual(focused, end - start, delta=3)

        # The desktop starts it when somebody asks for it, and browsers that start then are on it.
        browsers.switch_accessibility_on()
        self.process(*browsers.chromium(pages.url("two")))
        self.bring_to_front(self.first_window(".*Chromium"))
        arrives(lambda: uploaded.pages().get((CHROMIUM[0], pages.url("two"), "Page two"), 0) >= 2, "a page is seen again")
        self.assertEqual(tracker.stop(), 0)
        self.assertEqual(tracker.output, "")


if __name__ == "__main__":
    unittest.main()
