"""A session without a bus: no keyring, no accessibility, no settings service. The program covers all the same."""
import unittest

from support import x11
from support.covering import MIDNIGHT
from support.scene import XTERM, Scene
from support.scripted_service import ScriptedService, state
from support.waiting import stays, until


class NoBus(Scene):
    def test_the_window_comes_and_the_service_is_not_asked_without_a_key(self):
        service = ScriptedService(state(True))
        self.addCleanup(service.stop)
        focus = self.focus(origin=service.origin)
        window = focus.own_window()
        x, y, _, _ = x11.geometry_of(window)
        until(lambda: min(x11.pixel(x + 2, y + 2)) > 200, "the settings, which are light, are drawn")
        stays(lambda: not service.requests and focus.runs(), "the service is left alone")

    def test_a_blocked_application_is_covered(self):
        focus = self.active_focus(XTERM)
        x, y, _, _ = x11.geometry_of(focus.own_window())
        until(lambda: x11.pixel(x + 2, y + 2) == MIDNIGHT, "our window shows the blocking screen")
        _, terminal = self.xterm()
        self.assert_covered(focus)
        x11.key("Return")
        self.assert_uncovered(focus)
        until(lambda: x11.is_iconified(terminal), "the terminal is hidden")


if __name__ == "__main__":
    unittest.main(verbosity=2)
