"""Website protection where applications cannot be blocked, on a Wayland compositor that offers nothing for that: the settings say that it
works, and it does. Needs root and a network namespace of its own (tests/system/CMakeLists.txt)."""
import unittest

from support import accessible
from support.filtered import Network, has_rules, run
from support.programs import BIN, scratch
from support.scene import Scene
from support.waiting import until

TEXT = "Application blocking is not available here; website blocking works."


class WebsiteProtection(Scene):
    def setUp(self):
        self.network = Network()
        self.network.__enter__()
        self.addCleanup(self.network.__exit__, None, None, None)

    def test_a_listed_site_is_blocked_while_focus_is_active(self):
        prefix = scratch("installed")
        run("cmake", "--install", BIN.parent, "--prefix", prefix)
        self.network.start(prefix / "libexec" / "orvanta-filterd")
        program = prefix / "bin" / "orvanta-focus"
        focus = self.focus(program=program, domains=["blocked.example"])
        accessible.wait_for_text(focus.pid, lambda text: TEXT in text, "what works")
        accessible.press(accessible.wait_for(focus.pid, "push button", "Activate website protection"))
        accessible.wait_for(focus.pid, "push button", "Website protection ready")
        self.assertTrue(self.network.loads("http://blocked.example/"))
        focus.stop()

        focus = self.focus("--focus-active", program=program, synced=focus.synced, config=focus.config)
        until(lambda: has_rules() and not self.network.loads("http://blocked.example/"), lambda: f"the site is blocked\n{focus.output}")
        self.assertTrue(self.network.loads("http://other.example/"))


if __name__ == "__main__":
    unittest.main(verbosity=2)
