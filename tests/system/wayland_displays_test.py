"""Displays under a cover on Wayland: they come, go and are scaled."""
import unittest

from support.scene import EDITOR
from support.wayland import COMPOSITOR
from support.wayland_scene import WaylandScene
from support.waiting import until


class Displays(WaylandScene):
    def setUp(self):
        self.addCleanup(self.desktop.arrange, 1, 1)

    def assert_covered_where_it_is(self, focus, process):
        def faults():
            display = self.desktop.display_of(process.pid)
            return ["the compositor is moving it"] if display is None else self.faults(focus, display)

        until(lambda: not faults(), lambda: f"it is covered: {faults()}\n{self.desktop.windows()}\n{focus.output}")


class ComingAndGoing(Displays):
    def test_a_cover_is_where_the_application_is_whatever_displays_come_and_go(self):
        editor = self.native("mousepad")
        self.bring_to_front(editor)
        self.desktop.put_on_second_display(editor.pid)
        focus = self.active_focus(EDITOR)
        self.desktop.activate(editor.pid)
        self.assert_covered(focus, display=1)

        # The compositor takes the window to the display that is left, and some take it back.
        self.desktop.arrange(1, None)
        self.assert_covered_alone(focus, 0)
        self.desktop.arrange(1, 1)
        self.assert_covered_where_it_is(focus, editor)
        self.acknowledge(focus, editor)

        # While there is no cover.
        self.desktop.arrange(None, 1)
        self.desktop.activate(editor.pid)
        self.assert_covered_alone(focus, 1)
        self.acknowledge(focus, editor)


class Scaling(Displays):
    def test_a_scaled_display_is_covered_to_its_last_pixel(self):
        editor = self.native("mousepad")
        focus = self.active_focus(EDITOR)
        self.desktop.arrange(1.25, None)
        self.desktop.activate(editor.pid)
        for scale in (1.25, 1.5, 1):
            self.desktop.arrange(scale, None)
            self.assert_covered_alone(focus, 0)
        self.acknowledge(focus, editor)


if COMPOSITOR == "sway-in-x":  # the others always keep a display

    class WithoutAny(Displays):
        def test_a_program_without_any_display_lives_and_covers_the_one_that_comes_back(self):
            editor = self.native("mousepad")
            focus = self.active_focus(EDITOR)
            self.desktop.activate(editor.pid)
            self.assert_covered(focus)
            self.desktop.arrange(None, None)
            self.assertTrue(focus.runs())
            self.desktop.arrange(1, 1)
            self.assert_covered_where_it_is(focus, editor)
            self.acknowledge(focus, editor)


if __name__ == "__main__":
    unittest.main(verbosity=2)
