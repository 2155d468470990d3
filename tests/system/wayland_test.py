"""The main job on a Wayland desktop, with clients of both kinds."""
import json
import unittest

from support import accessible
from support.programs import Application
from support.scene import CALCULATOR, EDITOR, XTERM
from support.wayland import COMPOSITOR
from support.wayland_scene import BUTTON, WaylandScene
from support.waiting import until


class Covering(WaylandScene):
    def test_a_blocked_application_is_covered_until_the_user_focuses_or_goes_elsewhere(self):
        editor = self.native("mousepad")
        calculator = self.native("galculator")
        focus = self.active_focus(EDITOR)
        self.assertTrue(self.is_uncovered(focus))

        self.desktop.activate(editor.pid)
        self.assert_covered(focus)
        self.press_return_on_cover(focus)
        until(lambda: self.desktop.is_hidden(editor.pid), lambda: f"the editor is hidden: {self.desktop.windows()}")
        self.assertFalse(self.desktop.is_hidden(calculator.pid))
        self.assertTrue(editor.runs())
        self.assert_stays_uncovered(focus)

        self.desktop.activate(editor.pid)
        self.assert_covered(focus)
        self.desktop.activate(calculator.pid)
        self.assert_uncovered(focus)
        until(lambda: self.desktop.is_in_front(calculator.pid), "the calculator is in front")
        self.assertFalse(self.desktop.is_hidden(editor.pid))

    def test_a_client_of_xwayland_is_covered_and_hidden_alike(self):
        terminal = self.through_xwayland()
        focus = self.active_focus(XTERM)
        self.desktop.activate(terminal.pid)
        self.assert_covered(focus)
        accessible.press(accessible.wait_for(focus.pid, *BUTTON))
        self.assert_uncovered(focus)
        until(lambda: self.desktop.is_hidden(terminal.pid), lambda: f"the terminal is hidden: {self.desktop.windows()}")
        self.assert_stays_uncovered(focus)

    def test_a_full_screen_application_is_covered(self):
        focus = self.active_focus(XTERM)
        calculator = self.native("galculator")
        self.bring_to_front(calculator)
        self.desktop.put_on_second_display(calculator.pid)
        self.desktop.activate(focus.pid)  # back on the first display, where the next window opens
        until(lambda: self.desktop.is_in_front(focus.pid), "our window is in front")
        editor = self.native("mousepad")
        self.bring_to_front(editor)
        self.desktop.full_screen(editor.pid)
        until(lambda: self.desktop.window(editor.pid).frame == self.desktop.displays[0], lambda: f"the editor fills the display: {self.desktop.windows()}")
        self.bring_to_front(calculator)

        focus.write_lists([EDITOR])
        focus.wait_for_stored([EDITOR[0]])
        self.desktop.activate(editor.pid)
        self.assert_covered(focus)
        self.press_return_on_cover(focus)
        until(lambda: self.desktop.is_hidden(editor.pid), "the editor is hidden")
        self.assert_stays_uncovered(focus)

    def test_the_display_with_the_application_is_covered(self):
        self.native("galculator")
        editor = self.native("mousepad")
        self.bring_to_front(editor)
        self.desktop.put_on_second_display(editor.pid)
        focus = self.active_focus(EDITOR)
        self.desktop.activate(editor.pid)
        self.assert_covered(focus, display=1)
        self.assertTrue(any("colour" in fault for fault in self.faults(focus, display=0)))
        self.press_return_on_cover(focus)
        until(lambda: self.desktop.is_hidden(editor.pid), "the editor is hidden")

    def test_the_application_activated_again_beneath_its_cover_stays_covered_and_the_cover_answers_the_keyboard(self):
        editor = self.native("mousepad")
        focus = self.active_focus(EDITOR)
        for _ in range(3):
            self.desktop.activate(editor.pid)
            self.assert_covered(focus)
        self.press_return_on_cover(focus)
        until(lambda: self.desktop.is_hidden(editor.pid), "the editor is hidden")


class Sampling(WaylandScene):
    def sample(self):
        """What the program says of this moment."""
        process = self.keep(Application("--print-activity"))
        self.assertEqual(process.wait(), 0, process.output)
        return json.loads(process.output[process.output.index("{") :])

    def seen(self):
        """The application in front, and whether each that runs is active."""
        sample = self.sample()
        running = {application["bundleIdentifier"]: application["isActive"] for application in sample["runningApps"]}
        return sample.get("frontmostApp", {}).get("bundleIdentifier"), running

    def test_a_sample_names_the_application_in_front_and_those_that_run(self):
        editor = self.native("mousepad")
        terminal = self.through_xwayland()
        calculator = self.native("galculator")
        until(lambda: self.desktop.is_in_front(calculator.pid), "the calculator, which came last, is in front")
        for process, identifier in ((editor, EDITOR[0]), (terminal, XTERM[0]), (calculator, CALCULATOR[0])):
            self.bring_to_front(process)
            expected = {EDITOR[0]: False, XTERM[0]: False, CALCULATOR[0]: False, identifier: True}
            # A sample waits a second for a busy compositor, and is then told without applications.
            until(lambda: self.seen() == (identifier, expected), lambda: f"{identifier} is in front: {self.seen()}")


class Diagnosing(unittest.TestCase):
    SOURCES = {
        "sway": ("sway's commands", "a layer surface", "org_kde_kwin_idle"),
        "kwin": ("a script inside KWin", "a layer surface", "ext-idle-notify"),
        "gnome": ("the extension of GNOME Shell", "a window of the X server", "Mutter's idle monitor"),
    }

    def test_the_sources_in_use_are_named_and_nothing_is_missing(self):
        windows, cover, idle = self.SOURCES[COMPOSITOR]
        expected = [
            "Windows are shown by: a Wayland compositor",
            f"Applications are seen and hidden by: {windows}",
            f"The cover is: {cover}",
            f"The time without input is known by: {idle}",
            "Nothing is missing.",
        ]

        def diagnosis():
            program = Application("--diagnose")
            self.addCleanup(program.kill)
            return program.wait(), program.output.splitlines()

        # A diagnosis waits a second for a busy compositor.
        until(lambda: diagnosis() == (0, expected), lambda: f"nothing is missing: {diagnosis()}")


if __name__ == "__main__":
    unittest.main(verbosity=2)
