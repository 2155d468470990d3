"""Displays under a cover on Wayland: they come, go and are scaled."""
import unittest

from support import accessible
from support.scene import EDITOR
from support.wayland import COMPOSITOR
from support.wayland_scene import WaylandScene
from support.waiting import until


class Displays(WaylandScene):
    def arrange(self, *scales):
        self.addCleanup(self.desktop.arrange, 1, 1)
        self.desktop.arrange(*scales)

    def editor_on_second_display(self):
        self.native("galculator")
        editor = self.native("mousepad")
        self.bring_to_front(editor)
        self.to_second_display(editor)
        return editor

    def to_second_display(self, process):
        self.desktop.move_to_second_display(process.pid)
        left = self.desktop.displays[1][0]
        until(lambda: self.desktop.window(process.pid).frame[0] >= left, lambda: f"it is on the second display: {self.desktop.windows()}")

    def display_of(self, process):
        return int(self.desktop.window(process.pid).frame[0] >= self.desktop.displays[1][0])

    def acknowledge(self, focus, process):
        self.press_return_on_cover(focus)
        until(lambda: self.desktop.is_hidden(process.pid), lambda: f"it is hidden: {self.desktop.windows()}")
        self.assert_stays_uncovered(focus)


class ComingAndGoing(Displays):
    def test_the_cover_of_a_display_that_goes_moves_to_the_one_that_is_left_and_the_next_is_where_the_application_is(self):
        editor = self.editor_on_second_display()
        focus = self.active_focus(EDITOR)
        self.desktop.activate(editor.pid)
        self.assert_covered(focus, display=1)

        self.arrange(1, None)
        self.assert_covered_alone(focus, 0)
        self.acknowledge(focus, editor)

        self.desktop.arrange(1, 1)
        self.desktop.activate(editor.pid)
        until(lambda: self.desktop.is_in_front(editor.pid) or not self.is_uncovered(focus), "the editor is back")
        self.assert_covered(focus, display=self.display_of(editor))  # some compositors remember where a window was
        self.desktop.activate(focus.pid)
        self.assert_uncovered(focus)
        self.to_second_display(editor)
        self.desktop.activate(editor.pid)
        self.assert_covered(focus, display=1)
        self.acknowledge(focus, editor)

    def test_a_display_that_goes_while_nothing_is_covered_is_not_missed(self):
        editor = self.editor_on_second_display()
        focus = self.active_focus(EDITOR)
        self.desktop.activate(editor.pid)
        self.assert_covered(focus, display=1)
        self.acknowledge(focus, editor)
        for gone, scales in ((1, (1, None)), (0, (None, 1))):
            with self.subTest(gone=gone):
                self.arrange(*scales)
                self.desktop.activate(editor.pid)
                self.assert_covered_alone(focus, 1 - gone)
                self.acknowledge(focus, editor)


class Scaling(Displays):
    def test_a_scaled_display_is_covered_to_its_last_pixel(self):
        editor = self.native("mousepad")
        focus = self.active_focus(EDITOR)
        for scale in (1.25, 1.5):
            with self.subTest(scale=scale):
                self.arrange(scale, None)
                self.desktop.activate(editor.pid)
                self.assert_covered_alone(focus, 0)
                self.acknowledge(focus, editor)

    def test_a_cover_follows_the_scale_of_its_display(self):
        editor = self.native("mousepad")
        focus = self.active_focus(EDITOR)
        self.arrange(1, None)
        self.desktop.activate(editor.pid)
        for scale in (1, 1.5, 1):
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
            self.arrange(None, None)
            self.assertTrue(focus.runs())
            self.desktop.arrange(1, 1)
            self.assert_covered(focus)
            self.acknowledge(focus, editor)


if __name__ == "__main__":
    unittest.main(verbosity=2)
