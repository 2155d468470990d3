"""sway whose commands cannot be had: applications are seen by wlr-foreign-toplevel, and the user is told what that lacks."""
import unittest

from support import accessible
from support.programs import Application
from support.quiet import wait_until_quiet
from support.scene import EDITOR
from support.wayland_scene import WaylandScene
from support.waiting import until

TEXT = "Orvanta Focus cannot hide applications: sway does not take its commands. Start it from within sway."


class WithoutCommands(WaylandScene):
    def test_the_diagnosis_says_so(self):
        diagnosis = self.keep(Application("--diagnose"))
        self.assertEqual(diagnosis.wait(), 1)
        self.assertEqual(
            diagnosis.output.splitlines(),
            [
                "Windows are shown by: a Wayland compositor",
                "Applications are seen and hidden by: wlr-foreign-toplevel-management",
                "The cover is: a layer surface",
                "The time without input is known by: org_kde_kwin_idle",
                f"Missing: {TEXT}",
            ],
        )

    def test_the_settings_say_so_and_the_program_rests(self):
        focus = self.focus(applications=[EDITOR])
        accessible.wait_for(focus.pid, name=TEXT)
        wait_until_quiet(focus.pid)

    def test_a_blocked_application_is_covered_as_long_as_the_user_stays_there(self):
        editor = self.native("mousepad")
        calculator = self.native("galculator")
        focus = self.active_focus(EDITOR)
        self.bring_to_front(calculator)
        self.assert_stays_uncovered(focus)
        self.desktop.activate(editor.pid)
        self.assert_covered(focus)
        # What was answered could not be hidden, so it is in front again; what the user goes to beneath the cover stays there.
        self.desktop.activate(calculator.pid)
        self.press_return_on_cover(focus)
        until(lambda: self.desktop.is_in_front(calculator.pid), lambda: f"the calculator is in front: {self.desktop.windows()}")
        self.assert_stays_uncovered(focus)


if __name__ == "__main__":
    unittest.main(verbosity=2)
