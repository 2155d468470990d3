"""A Wayland compositor that offers nothing by which applications are seen: the user is told, and what is left works."""
import json
import unittest

from support import accessible, x11
from support.programs import Application, store_key
from support.quiet import wait_until_quiet
from support.scene import XTERM, Scene
from support.waiting import stays, until
from support.wayland_scene import BUTTON

TEXT = "Application blocking is not available here; website blocking works."
NO_COVER = "Orvanta Focus cannot cover applications. Start it where XWayland runs."
NO_IDLE = "This desktop does not tell how long nothing was typed or moved; activity counts as going on."


class Unknown(Scene):
    def diagnosis(self, **environment):
        diagnosis = self.keep(Application("--diagnose", environment=environment))
        self.assertEqual(diagnosis.wait(), 1)
        return diagnosis.output.splitlines()

    def test_the_diagnosis_says_what_is_missing(self):
        self.assertEqual(
            self.diagnosis(),
            [
                "Windows are shown by: a Wayland compositor",
                "Applications are seen and hidden by: nothing",
                "The cover is: a window of the X server",
                "The time without input is known by: nothing",
                f"Missing: {TEXT}",
                f"Missing: {NO_IDLE}",
            ],
        )

    def test_without_xwayland_the_cover_is_missing_too(self):
        lines = self.diagnosis(DISPLAY=None)
        self.assertIn("The cover is: nothing", lines)
        self.assertEqual([line for line in lines if line.startswith("Missing")], [f"Missing: {text}" for text in (TEXT, NO_COVER, NO_IDLE)])

    def assert_the_rest_goes_on(self, **environment):
        service = self.service()
        store_key(service.key)
        focus = self.focus(applications=[XTERM], origin=service.origin, environment=environment)
        accessible.wait_for_text(focus.pid, lambda text: TEXT in text, "what is not available")
        wait_until_quiet(focus.pid)

        service.start_task()
        accessible.wait_for(focus.pid, name="Orvanta crown")
        focus.write_lists([XTERM], ["blocked.example"])
        focus.wait_for_stored([XTERM[0]], ["blocked.example"])
        service.end_task()
        accessible.wait_for(focus.pid, name="Focus inactive")
        return focus

    def test_the_settings_say_it_and_the_rest_goes_on_without_toil(self):
        self.assert_the_rest_goes_on()

    def test_so_it_is_without_xwayland(self):
        focus = self.assert_the_rest_goes_on(DISPLAY=None)
        self.assertTrue(any(NO_COVER in text for text in accessible.texts(focus.pid)))

    def test_a_blocked_application_comes_to_the_front_uncovered(self):
        focus = self.focus("--focus-active", applications=[XTERM])
        accessible.wait_for(focus.pid, name="Orvanta crown")
        terminal = self.process("xterm", "-e", "tail", "-f", "/dev/null")
        until(lambda: x11.run("xdotool", "search", "--onlyvisible", "--class", "XTerm", check=False), lambda: f"the terminal is shown\n{terminal.output}")
        stays(lambda: not accessible.find(focus.pid, *BUTTON), "no cover")

    def test_a_sample_is_taken_all_the_same(self):
        process = self.keep(Application("--print-activity"))
        self.assertEqual(process.wait(), 0, process.output)
        sample = json.loads(process.output[process.output.index("{") :])
        self.assertEqual(sample["runningApps"], [])


if __name__ == "__main__":
    unittest.main(verbosity=2)
