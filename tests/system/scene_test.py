"""The main job, from the task's start to its end, with a real text editor as the blocked application."""
import unittest

from support import accessible, x11
from support.programs import Application, Process, Service, store_key
from support.waiting import until

MOUSEPAD = ("org.xfce.mousepad.desktop", "Mousepad")


class Scene(unittest.TestCase):
    def test_a_task_covers_a_blocked_application_until_the_user_focuses(self):
        service = Service()
        self.addCleanup(service.stop)
        store_key(service.key)
        focus = Application(origin=service.origin, applications=[MOUSEPAD])
        self.addCleanup(focus.stop)
        own_window = focus.own_window()
        accessible.wait_for(focus.pid, name="Orvanta connected")
        accessible.wait_for(focus.pid, name="Focus inactive")

        service.start_task()
        accessible.wait_for(focus.pid, name="Orvanta crown")

        editor = Process(["mousepad"])
        self.addCleanup(editor.kill)
        cover = focus.wait_for_cover()
        until(lambda: x11.active_window() == cover, "the cover has the keyboard")
        self.assertEqual(x11.geometry_of(cover), (0, 0, 1920, 1080))
        self.assertEqual(x11.stacking()[-1], cover)
        self.assertTrue(accessible.find(focus.pid, name="You own your time, your orvanta."))

        accessible.press(accessible.wait_for(focus.pid, "push button", "I will focus now"))
        focus.wait_for_no_cover()
        until(lambda: not x11.windows(pid=editor.pid), "the editor is hidden")
        self.assertTrue(editor.runs())

        service.end_task()
        accessible.wait_for(focus.pid, name="Focus inactive")
        self.assertTrue(x11.is_viewable(own_window))
        self.assertNotIn("not covered", focus.output)


if __name__ == "__main__":
    unittest.main(verbosity=2)
