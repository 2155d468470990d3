"""What takes minutes of activity tracking, all of it at once: one of the clock's minutes after the other, in real time, and beside
them a tracker whose service is away for eleven periods."""
import time
import unittest

from support.activity import TERMINAL, ActivityScene, Uploaded
from support.programs import store_key
from support.waiting import until

REFUSED = "API error: Connection refused"
DROPPED = "Warning: Dropping oldest pending data due to repeated failures"


class Absence:
    """A tracker whose service is away, until its first period has been dropped."""

    period = 8

    def __init__(self, scene):
        self.scene = scene
        self.service = scene.service()
        self.uploaded = Uploaded(self.service)
        key = self.service.key
        self.service.stop()
        self.start = time.time()
        self.tracker = scene.tracker(self.service, 0.5, self.period, 1, key)

    def check_after_eleven_periods_ten_arrive_as_one(self):
        scene, period, tracker = self.scene, self.period, self.tracker
        until(lambda: DROPPED in tracker.output, lambda: f"the oldest is dropped\n{tracker.output}", 300)
        scene.assertGreaterEqual(time.time() - self.start, 11 * period)
        self.service.start()
        until(self.uploaded.periods, lambda: f"a body arrives\n{tracker.output}")
        scene.assertEqual(tracker.stop(), 0)

        first = self.uploaded.periods()[0]
        scene.assertAlmostEqual(first[0], self.start + period, delta=4)
        scene.assertGreaterEqual(first[1] - first[0], 10 * period - 1)
        scene.assertLessEqual(first[1] - first[0], 10 * (period + 2))
        scene.assertAlmostEqual(first[3], first[1] - first[0], delta=5)
        lines = tracker.output.splitlines()
        scene.assertEqual(lines.count(DROPPED), 1, tracker.output)
        scene.assertGreaterEqual(lines.count(REFUSED), 11)
        scene.assertEqual(set(lines), {DROPPED, REFUSED}, tracker.output)


class Minutes(ActivityScene):
    def test_two_real_minutes_of_the_application_and_eleven_periods_without_a_service(self):
        service = self.service()
        store_key(service.key)
        uploaded = Uploaded(service)
        start = time.time()
        focus = self.focus(origin=service.origin)
        focus.own_window()
        _, window = self.xterm()
        self.bring_to_front(window)
        Absence(self).check_after_eleven_periods_ten_arrive_as_one()

        until(lambda: len(uploaded.periods()) >= 2, lambda: f"two periods arrive: {uploaded.periods()}\n{focus.output}", 200)
        self.assertGreaterEqual(time.time() - start, 110)
        periods = uploaded.periods()[:2]
        for begin, end, idle, focused in periods:
            self.assertAlmostEqual(end - begin, 60, delta=8)
            self.assertAlmostEqual(focused, end - begin, delta=3)
            self.assertLessEqual(idle, end - begin + 1)
        self.assertGreaterEqual(periods[1][0], periods[0][1] - 1)
        self.assertGreaterEqual(uploaded.applications()[TERMINAL], 100)
        # Nobody has touched anything for nearly all of it.
        self.assertGreaterEqual(periods[1][2], 50)


if __name__ == "__main__":
    unittest.main()
