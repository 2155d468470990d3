"""The desktop's setting for less motion, obeyed while the blocking screen is shown."""
import os
import unittest

from support import x11
from support.covering import MIDNIGHT
from support.scene import XTERM, Scene
from support.waiting import happens, until

SETTING = ("org.gnome.desktop.interface", "enable-animations")


class Motion(Scene):
    def setUp(self):
        # The desktop's own settings folder, which gsettings writes and the program must share.
        self.options = {"config": os.environ["XDG_CONFIG_HOME"], "environment": {"GSETTINGS_BACKEND": "keyfile"}}
        self.animate(True)
        self.addCleanup(self.animate, True)

    def animate(self, on):
        x11.run("env", "GSETTINGS_BACKEND=keyfile", "gsettings", "set", *SETTING, "true" if on else "false")

    def picture(self, window):
        x, y, width, height = x11.geometry_of(window)
        return x11.picture(x + width // 4, y + height // 8, width // 2, height // 2)

    def assert_moves(self, window):
        first = self.picture(window)
        until(lambda: self.picture(window) != first, "the glow moves")

    def assert_comes_to_rest(self, window):
        def rests():
            first = self.picture(window)
            return not happens(lambda: self.picture(window) != first)  # in a fifth of a breath

        until(rests, "the glow rests")

    def test_the_window_obeys_while_it_is_shown(self):
        focus = self.focus("--blocked-preview", **self.options)
        window = focus.own_window()
        x, y, _, height = x11.geometry_of(window)
        until(lambda: x11.pixel(x + 3, y + height - 3) == MIDNIGHT, "the blocking screen is drawn")
        self.assert_moves(window)
        for _ in range(2):
            self.animate(False)
            self.assert_comes_to_rest(window)
            self.animate(True)
            self.assert_moves(window)

    def test_the_cover_obeys_while_it_is_shown(self):
        focus = self.active_focus(XTERM, **self.options)
        self.xterm()
        cover = self.assert_covered(focus)
        self.assert_moves(cover)
        self.animate(False)
        self.assert_comes_to_rest(cover)
        self.animate(True)
        self.assert_moves(cover)

    def test_a_start_with_less_motion_shows_a_screen_at_rest(self):
        self.animate(False)
        focus = self.active_focus(XTERM, **self.options)
        self.xterm()
        cover = self.assert_covered(focus)
        self.assert_comes_to_rest(cover)


if __name__ == "__main__":
    unittest.main(verbosity=2)
