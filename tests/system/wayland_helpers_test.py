"""What tells of windows on Wayland goes and comes back: it is taken anew, and nothing is made up."""
import os
import unittest
from pathlib import Path

from support.scene import EDITOR
from support.wayland import COMPOSITOR
from support.wayland_scene import WaylandScene
from support.waiting import stays, until


class Interrupted(WaylandScene):
    def start(self):
        """The editor was covered once, and the calculator is in front."""
        calculator = self.native("galculator")
        editor = self.native("mousepad")
        focus = self.active_focus(EDITOR)
        self.desktop.activate(editor.pid)
        self.assert_covered(focus)
        self.press_return_on_cover(focus)
        self.calculator = calculator
        self.go_elsewhere(focus)
        return focus, editor

    def go_elsewhere(self, focus):
        """The cover that goes gives the front to some window, in its own time."""
        pid = self.calculator.pid
        until(lambda: self.desktop.is_in_front(pid) or self.desktop.activate(pid), "the calculator is in front")
        self.assert_stays_uncovered(focus)  # the program has heard of it

    def assert_covers_again(self, focus, editor):
        """Also where the editor came to the front before anybody told of it."""
        self.assert_stays_uncovered_at_rest(focus)
        self.desktop.activate(editor.pid)
        self.assert_covered(focus)
        self.acknowledge(focus, editor)
        self.go_elsewhere(focus)


if COMPOSITOR == "gnome":

    class Extension(Interrupted):
        def test_the_lock_takes_the_extension_away_and_unlocking_brings_it_back(self):
            focus, editor = self.start()
            self.addCleanup(self.desktop.lock, False)
            self.desktop.lock(True)
            self.assertFalse(self.desktop.has_extension())
            self.assert_stays_uncovered_at_rest(focus)
            self.desktop.lock(False)
            until(self.desktop.has_extension, "the extension is back")
            self.assert_stays_uncovered_at_rest(focus)

            self.desktop.activate(editor.pid)
            self.assert_covered(focus)
            self.desktop.lock(True)
            stays(lambda: not self.is_uncovered(focus), "the cover is there")
            self.desktop.lock(False)
            until(self.desktop.has_extension, "the extension is back")
            self.assert_stays_covered(focus)
            self.acknowledge(focus, editor)


if COMPOSITOR == "kwin":

    class Script(Interrupted):
        def test_a_script_that_somebody_unloads_is_loaded_again(self):
            focus, editor = self.start()
            self.desktop.reconfigure()
            self.assert_covers_again(focus, editor)
            self.assertTrue(self.desktop.unload_script(f"orvanta_focus_{focus.pid}_1"))
            self.assert_covers_again(focus, editor)


if COMPOSITOR == "sway":

    class Commands(Interrupted):
        def test_a_program_that_was_hung_up_on_calls_again(self):
            focus, editor = self.start()
            self.desktop.reload()
            self.assert_covers_again(focus, editor)

            # Who does not listen for long is hung up on.
            log = Path(os.environ["ORVANTA_DESKTOP_LOGS"]) / "compositor"
            focus.pause()
            self.addCleanup(focus.resume)
            until(lambda: self.desktop.chatter() or "disconnecting client" in log.read_text(errors="replace"), "sway hangs up")
            focus.resume()
            self.assert_covers_again(focus, editor)


if __name__ == "__main__":
    unittest.main(verbosity=2)
