"""The desktop's Do Not Disturb: switching it on is focus, and switching it off is its end."""
import os
import unittest

from support import accessible, x11
from support.do_not_disturb import DoNotDisturb
from support.scene import XTERM, Scene
from support.waiting import stays

ACTIVE = "Orvanta crown"  # what the window shows while focus is active
INACTIVE = "Focus inactive"


class SystemFocus(Scene):
    def service_of(self, kind):
        service = DoNotDisturb(kind)
        self.addCleanup(service.stop)
        return service

    def listening_focus(self, **environment):
        """The program in a session of that environment, with the terminal blocked and nobody asking for focus."""
        # The desktop's own settings folder, which gsettings writes and the program must share.
        return self.focus(applications=[XTERM], config=os.environ["XDG_CONFIG_HOME"], environment={"GSETTINGS_BACKEND": "keyfile", **environment})

    def assert_on(self, focus):
        accessible.wait_for(focus.pid, name=ACTIVE)

    def assert_off(self, focus):
        accessible.wait_for(focus.pid, name=INACTIVE)

    def assert_covers_from_on_to_off(self, service, focus):
        """From the user's switch to the cover, and back."""
        _, calculator = self.calculator()
        _, terminal = self.xterm()
        self.assert_off(focus)
        self.bring_to_front(calculator)
        self.bring_to_front(terminal)
        self.assert_stays_uncovered(focus)

        for _ in range(2):
            service("on")
            self.assert_on(focus)
            self.bring_to_front(calculator)
            x11.activate(terminal)
            self.assert_covered(focus)

            # As with every other end of focus, the cover goes with the next application that comes to the front.
            service("off")
            self.assert_off(focus)
            self.bring_to_front(calculator)
            self.assert_uncovered(focus)
            self.bring_to_front(terminal)
            self.assert_stays_uncovered(focus)

    def test_gnome(self):
        service = self.service_of("gnome")
        self.addCleanup(service, "off")
        service("off")
        self.assert_covers_from_on_to_off(service, self.listening_focus(XDG_CURRENT_DESKTOP="GNOME"))

    def test_plasma(self):
        self.assert_covers_from_on_to_off(self.service_of("kde"), self.listening_focus(XDG_CURRENT_DESKTOP="KDE"))

    def test_dunst(self):
        self.assert_covers_from_on_to_off(self.service_of("dunst"), self.listening_focus())

    def test_xfce(self):
        self.assert_covers_from_on_to_off(self.service_of("xfce"), self.listening_focus(XDG_CURRENT_DESKTOP="XFCE"))

    def test_sway(self):
        self.assert_covers_from_on_to_off(self.service_of("swaync"), self.listening_focus())

    def test_what_is_on_before_the_start_counts(self):
        service = self.service_of("kde")
        service("on")
        focus = self.listening_focus()
        self.assert_on(focus)
        service("off")
        self.assert_off(focus)

    def test_a_service_that_comes_later_counts_and_one_that_goes_does_not(self):
        focus = self.listening_focus()
        self.assert_off(focus)
        service = self.service_of("dunst")
        service("on")
        self.assert_on(focus)
        service("leave")
        self.assert_off(focus)

    def test_a_task_goes_on_when_do_not_disturb_ends(self):
        service = self.service_of("kde")
        service("on")
        focus = self.focus("--focus-active", applications=[XTERM])
        self.assert_on(focus)
        service("off")
        stays(lambda: accessible.find(focus.pid, name=ACTIVE), "focus stays active", 3)  # longer than the program looks away


if __name__ == "__main__":
    unittest.main(verbosity=2)
