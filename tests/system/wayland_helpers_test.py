"""What tells of windows on Wayland goes and comes back: it is taken anew, and nothing is made up."""
import os
import unittest
from pathlib import Path

from support.scene import EDITOR
from support.wayland import COMPOSITOR
from support.wayland_scene import WaylandScene
from support.waiting import stays, until


def ticks(process):
    """Hundredths of a second of processor time that it has used."""
    fields = Path(f"/proc/{process.pid}/stat").read_text(encoding="ascii").rpartition(")")[2].split()
    return int(fields[11]) + int(fields[12])


class Interrupted(WaylandScene):
    def setUp(self):
        self.calculator = self.native("galculator")
        self.editor = self.native("mousepad")
        self.focus_process = self.active_focus(EDITOR)
        self.cover_and_acknowledge()
        self.bring_to_front(self.calculator)
        self.assert_uncovered(self.focus_process)

    def cover_and_acknowledge(self):
        self.desktop.activate(self.editor.pid)
        self.assert_covered(self.focus_process)
        self.press_return_on_cover(self.focus_process)
        until(lambda: self.desktop.is_hidden(self.editor.pid), "the editor is hidden")

    def assert_makes_nothing_up(self):
        before = ticks(self.focus_process)
        self.assert_stays_uncovered(self.focus_process)
        self.assertLess(ticks(self.focus_process) - before, 40)  # of a hundred in this second

    def assert_covers_again(self):
        """Whatever came to the front before it was back is judged as well."""
        self.assert_makes_nothing_up()
        self.cover_and_acknowledge()
        self.assert_stays_uncovered(self.focus_process)


if COMPOSITOR == "gnome":

    class Extension(Interrupted):
        def test_the_lock_takes_the_extension_away_and_unlocking_brings_it_back(self):
            self.addCleanup(self.desktop.lock, False)
            self.desktop.lock(True)
            self.assertFalse(self.desktop.has_extension())
            self.assert_makes_nothing_up()
            self.desktop.lock(False)
            until(self.desktop.has_extension, "the extension is back")
            self.assert_covers_again()

        def test_a_cover_outlives_the_lock(self):
            self.desktop.activate(self.editor.pid)
            self.assert_covered(self.focus_process)
            self.addCleanup(self.desktop.lock, False)
            self.desktop.lock(True)
            stays(lambda: not self.is_uncovered(self.focus_process), "the cover is there")
            self.desktop.lock(False)
            until(self.desktop.has_extension, "the extension is back")
            self.assert_stays_covered(self.focus_process)
            self.press_return_on_cover(self.focus_process)
            until(lambda: self.desktop.is_hidden(self.editor.pid), "the editor is hidden")
            self.assert_stays_uncovered(self.focus_process)


if COMPOSITOR == "kwin":

    class Script(Interrupted):
        def test_a_script_that_somebody_unloads_is_loaded_again(self):
            self.assertTrue(self.desktop.unload_script(f"orvanta_focus_{self.focus_process.pid}_1"))
            self.assert_covers_again()

        def test_an_application_that_came_to_the_front_meanwhile_is_covered(self):
            self.assertTrue(self.desktop.unload_script(f"orvanta_focus_{self.focus_process.pid}_1"))
            self.bring_to_front(self.editor)
            self.assert_covered(self.focus_process)

        def test_kwin_may_read_its_settings_anew(self):
            self.desktop.reconfigure()
            self.assert_covers_again()


if COMPOSITOR == "sway":

    class Commands(Interrupted):
        def test_a_program_that_was_hung_up_on_calls_again(self):
            log = Path(os.environ["ORVANTA_DESKTOP_LOGS"]) / "compositor"
            # Who does not listen for long is hung up on.
            self.focus_process.pause()
            self.addCleanup(self.focus_process.resume)
            until(lambda: self.desktop.chatter() or "disconnecting client" in log.read_text(errors="replace"), "sway hangs up")
            self.focus_process.resume()
            self.assert_covers_again()

        def test_sway_may_read_its_settings_anew(self):
            self.desktop.reload()
            self.assert_covers_again()


if __name__ == "__main__":
    unittest.main(verbosity=2)
