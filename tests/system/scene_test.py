"""The main job, from the task's start to its end, with a real text editor as the blocked application."""
import unittest

from support import accessible, x11
from support.programs import store_key
from support.scene import EDITOR, Scene
from support.waiting import until


class MainScene(Scene):
    def test_a_task_covers_a_blocked_application_until_the_user_focuses(self):
        service = self.service()
        store_key(service.key)
        focus = self.focus(origin=service.origin, applications=[EDITOR])
        own_window = focus.own_window()
        accessible.wait_for(focus.pid, name="Orvanta connected")
        accessible.wait_for(focus.pid, name="Focus inactive")

        service.start_task()
        accessible.wait_for(focus.pid, name="Orvanta crown")
        self.assertFalse(focus.covers())

        editor = self.process("mousepad")
        cover = self.assert_covered(focus)
        self.assertEqual(x11.stacking()[-1], cover)
        self.assertTrue(accessible.find(focus.pid, name="You own your time, your orvanta."))
        editor_window = self.window_of(editor)

        accessible.press(accessible.wait_for(focus.pid, "push button", "I will focus now"))
        self.assert_uncovered(focus)
        until(lambda: not x11.is_viewable(editor_window) and x11.is_iconified(editor_window), "the editor is iconified")
        self.assertTrue(editor.runs())

        x11.activate(editor_window)
        self.assert_covered(focus)
        x11.key("Return")
        self.assert_uncovered(focus)

        service.end_task()
        accessible.wait_for(focus.pid, name="Focus inactive")
        self.assertTrue(x11.is_viewable(own_window))
        self.bring_to_front(editor_window)
        self.assert_stays_uncovered(focus)


if __name__ == "__main__":
    unittest.main(verbosity=2)
