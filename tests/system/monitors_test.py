"""Two monitors, L on the left and R on the right: the cover is on the one where the blocked application is."""
import unittest

from support import accessible, x11
from support.covering import faults
from support.scene import CALCULATOR, XTERM, Scene
from support.waiting import stays, until

LEFT = (0, 0, 960, 1080)
RIGHT = (960, 0, 960, 1080)


def monitors():
    return [line.split()[-1] for line in x11.run("xrandr", "--listmonitors").splitlines()[1:]]


def add_right_monitor(height=1080):
    x11.run("xrandr", "--setmonitor", "R", f"960/254x{height}/{height * 254 // 960}+960+0", "none")
    until(lambda: len(monitors()) == 2, "the monitor is there")


def remove_right_monitor():
    x11.run("xrandr", "--delmonitor", "R")
    until(lambda: len(monitors()) == 1, "the monitor is gone")


def restore_right_monitor():
    if len(monitors()) == 2:
        remove_right_monitor()
    add_right_monitor()


class Monitors(Scene):
    def setUp(self):
        self.assertEqual(len(monitors()), 2)

    def cover_on(self, focus, frame):
        return until(
            lambda: next((cover for cover in focus.covers() if x11.geometry_of(cover) == frame), None),
            lambda: f"{frame} is covered; there is {[x11.geometry_of(cover) for cover in focus.covers()]}\n{focus.output}",
        )

    def assert_covered_on(self, focus, frame):
        cover = self.cover_on(focus, frame)
        until(lambda: not faults(cover, frame), lambda: f"the cover is right: {faults(cover, frame)}")
        return cover

    def assert_frames(self, focus, *frames):
        stays(
            lambda: sorted(x11.geometry_of(cover) for cover in focus.covers()) == sorted(frames),
            lambda: f"covers on {frames}, but on {[x11.geometry_of(cover) for cover in focus.covers()]}",
        )

    def test_only_the_monitor_with_the_blocked_application_is_covered(self):
        focus = self.active_focus(XTERM)
        self.xterm("-geometry", "60x20+1200+200")
        self.assert_covered_on(focus, RIGHT)
        self.assert_frames(focus, RIGHT)
        self.assertTrue(x11.is_seen_at(focus.own_window(), *self.inside(focus.own_window())))

    def inside(self, window):
        x, y, width, height = x11.geometry_of(window)
        return x + width // 2, y + height // 2

    def test_the_left_monitor_gets_its_own_cover(self):
        focus = self.active_focus(XTERM, CALCULATOR)
        _, calculator = self.calculator()
        self.assert_covered(focus, self.monitor_of(calculator))
        x11.key("Return")
        self.assert_uncovered(focus)
        self.xterm("-geometry", "60x20+1200+200")
        self.assert_covered_on(focus, RIGHT)
        x11.activate(calculator)
        x11.move(calculator, 100, 100)
        until(lambda: self.monitor_of(calculator) == LEFT, "the calculator is on the left")
        x11.activate(calculator)
        cover = self.assert_covered_on(focus, LEFT)
        self.assert_frames(focus, LEFT, RIGHT)
        stays(lambda: not faults(cover, LEFT), lambda: f"the cover is right: {faults(cover, LEFT)}")

        for _ in range(3):
            x11.activate(calculator)
            self.assert_covered_on(focus, LEFT)
        self.assert_frames(focus, LEFT, RIGHT)
        self.assertEqual(len(focus.panels()), 2, "one panel a display, used again")

        x11.key("Return")
        until(lambda: x11.is_iconified(calculator), "the calculator is hidden")
        # The terminal is what the window manager picks next: its own monitor alone is covered then.
        self.assert_covered_on(focus, RIGHT)
        self.assert_frames(focus, RIGHT)
        x11.key("Return")
        self.assert_uncovered(focus)

    def monitor_of(self, window):
        x, _ = self.inside(window)
        return LEFT if x < RIGHT[0] else RIGHT

    def test_a_monitor_that_goes_while_it_is_covered_and_comes_back_is_covered_again(self):
        self.addCleanup(restore_right_monitor)
        focus = self.active_focus(XTERM)
        _, terminal = self.xterm("-geometry", "60x20+1200+200")
        self.assert_covered_on(focus, RIGHT)
        for height in (1080, 720, 1080):  # it may come back as another one
            remove_right_monitor()
            self.assert_covered_on(focus, LEFT)

            add_right_monitor(height)
            self.bring_to_front(focus.own_window())
            self.assert_uncovered(focus)
            accessible.wait_until_active(focus.pid)
            x11.move(terminal, 1200, 200)
            until(lambda: self.monitor_of(terminal) == RIGHT, "the terminal is on the right")
            x11.activate(terminal)
            self.assert_covered_on(focus, (960, 0, 960, height))
        x11.key("Return")
        self.assert_uncovered(focus)
        until(lambda: x11.is_iconified(terminal), "the terminal is hidden")


if __name__ == "__main__":
    unittest.main(verbosity=2)
