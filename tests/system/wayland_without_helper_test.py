"""GNOME Shell without our extension: the user is told what to install, and the rest goes on."""
import unittest

from support import accessible
from support.programs import Application
from support.scene import EDITOR
from support.wayland import desktop
from support.wayland_scene import WaylandScene
from support.waiting import happens, until

TEXT = "Orvanta Focus cannot see which application is in front. Install its GNOME extension, then log out and in."


class WithoutExtension(WaylandScene):
    def test_the_diagnosis_says_what_to_install(self):
        diagnosis = self.keep(Application("--diagnose"))
        self.assertEqual(diagnosis.wait(), 1)
        lines = diagnosis.output.splitlines()
        self.assertIn("Applications are seen and hidden by: nothing", lines)
        self.assertIn("The cover is: a window of the X server", lines)
        self.assertIn(f"Missing: {TEXT}", lines)

    def test_the_settings_say_the_same_and_the_program_goes_on_without_toil(self):
        editor = self.native("mousepad")
        focus = self.focus(applications=[EDITOR])
        accessible.wait_for(focus.pid, name=TEXT)
        self.desktop.activate(editor.pid)
        until(lambda: self.desktop.is_in_front(editor.pid), "the editor is in front")
        self.assert_stays_uncovered(focus)
        self.assert_stays_uncovered_at_rest(focus)

    def test_the_extension_switched_on_later_is_taken(self):
        editor = self.native("mousepad")
        focus = self.active_focus(EDITOR)
        desktop().switch_extension(True)
        self.addCleanup(desktop().switch_extension, False)

        def covered():
            self.desktop.activate(focus.pid)
            self.desktop.activate(editor.pid)
            return happens(lambda: not self.is_uncovered(focus))

        until(covered, "the editor is covered")

    def test_the_extension_that_goes_and_comes_back_invents_no_activation(self):
        editor = self.native("mousepad")
        calculator = self.native("galculator")
        desktop().switch_extension(True)
        self.addCleanup(desktop().switch_extension, False)
        focus = self.active_focus(EDITOR)
        self.desktop.activate(editor.pid)
        self.assert_covered(focus)
        self.press_return_on_cover(focus)

        desktop().switch_extension(False)
        self.desktop.activate(editor.pid)
        until(lambda: self.desktop.is_in_front(editor.pid), "the editor is in front")
        self.assert_stays_uncovered(focus)
        self.desktop.activate(calculator.pid)
        until(lambda: self.desktop.is_in_front(calculator.pid), "the calculator is in front")

        desktop().switch_extension(True)
        until(desktop().has_extension, "the extension is back")
        self.assert_stays_uncovered(focus)

        def covered():
            """What comes to the front before the program has heard of the extension is not told."""
            self.desktop.activate(calculator.pid)
            self.desktop.activate(editor.pid)
            return happens(lambda: not self.is_uncovered(focus))

        until(covered, "the editor is covered")
        self.assert_covered(focus)


if __name__ == "__main__":
    unittest.main(verbosity=2)
