"""What takes the cover away: the reply, in every way that it can be given, and any other application."""
import unittest

from support import accessible, x11
from support.scene import CALCULATOR, XTERM, Scene
from support.waiting import until

REPLY = "I will focus now"


class Leaving(Scene):
    def covered(self, *more):
        """The program with a terminal covered, and the terminal's window."""
        _, terminal = self.xterm()
        focus = self.active_focus(XTERM, *more)
        x11.activate(terminal)
        self.assert_covered(focus)
        return focus, terminal

    def assert_acknowledged(self, focus, *hidden):
        self.assert_uncovered(focus)
        for window in hidden:
            until(lambda window=window: x11.is_iconified(window) and not x11.is_viewable(window), f"window {window:#x} is iconified")
        self.assert_stays_uncovered(focus)

    def test_a_click_on_the_reply_acknowledges(self):
        focus, terminal = self.covered()
        x11.click(*accessible.centre(accessible.wait_for(focus.pid, "push button", REPLY)))
        self.assert_acknowledged(focus, terminal)

    def test_return_acknowledges(self):
        focus, terminal = self.covered()
        x11.key("Return")
        self.assert_acknowledged(focus, terminal)

    def test_the_space_bar_acknowledges(self):
        focus, terminal = self.covered()
        x11.key("space")
        self.assert_acknowledged(focus, terminal)

    def test_an_assistive_technology_acknowledges(self):
        focus, terminal = self.covered()
        accessible.press(accessible.wait_for(focus.pid, "push button", REPLY))
        self.assert_acknowledged(focus, terminal)

    def test_a_click_beside_the_reply_does_nothing(self):
        focus, _ = self.covered()
        x11.click(30, 30)
        self.assert_stays_covered(focus)

    def test_an_acknowledged_application_is_covered_when_it_comes_back(self):
        focus, terminal = self.covered()
        for _ in range(3):
            x11.key("Return")
            self.assert_acknowledged(focus, terminal)
            x11.activate(terminal)
            self.assert_covered(focus)

    def test_acknowledging_hides_every_window_of_the_application(self):
        first, one = self.xterm("-geometry", "+100+100")
        second, two = self.xterm("-geometry", "+900+500")
        focus = self.active_focus(XTERM)
        x11.activate(one)
        self.assert_covered(focus)
        x11.key("Return")
        self.assert_acknowledged(focus, one, two)
        self.assertTrue(first.runs() and second.runs())

    def test_acknowledging_leaves_other_applications_alone(self):
        _, calculator = self.calculator()
        focus, terminal = self.covered()
        x11.key("Return")
        self.assert_acknowledged(focus, terminal)
        self.assertTrue(x11.is_viewable(calculator))

    def test_acknowledging_works_with_nothing_else_open(self):
        focus = self.active_focus(XTERM)
        own = focus.own_window()
        x11.close(own)
        until(lambda: not focus.ordinary_windows(), "our window is closed")
        _, terminal = self.xterm()
        self.assert_covered(focus)
        x11.key("Return")
        self.assert_acknowledged(focus, terminal)
        self.assertEqual([window for window in x11.clients() if x11.is_viewable(window)], [])

    def test_another_application_that_comes_to_the_front_takes_the_cover_away(self):
        _, calculator = self.calculator()
        focus, terminal = self.covered()
        self.bring_to_front(calculator)
        self.assert_uncovered(focus)
        self.assertTrue(x11.is_viewable(terminal))
        self.assertEqual(x11.active_window(), calculator)
        self.assert_stays_uncovered(focus)

    def test_another_blocked_application_that_comes_to_the_front_is_covered_as_well(self):
        _, calculator = self.calculator()
        focus, terminal = self.covered(CALCULATOR)
        x11.activate(calculator)
        cover = self.assert_stays_covered(focus)
        self.assertEqual(focus.covers(), [cover])
        x11.key("Return")
        until(lambda: x11.is_iconified(calculator), "the calculator is hidden")
        # The next window that the window manager picks is the terminal: blocked as well. The cover may go in between.
        self.assert_comes_to_be_covered(focus)
        x11.key("Return")
        self.assert_acknowledged(focus, calculator, terminal)

    def test_our_own_window_that_comes_to_the_front_takes_the_cover_away(self):
        focus, terminal = self.covered()
        self.bring_to_front(focus.own_window())
        self.assert_uncovered(focus)
        self.assertTrue(x11.is_viewable(terminal))
        self.assert_stays_uncovered(focus)


if __name__ == "__main__":
    unittest.main(verbosity=2)
