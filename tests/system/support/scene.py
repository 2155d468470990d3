"""What every scene has: programs that end with the test, and their output when it fails."""
import signal
import sys
import unittest

from . import x11
from .covering import SCREEN, faults, wait_until_covers
from .programs import Application, Process, Service
from .waiting import comes_to_stay, stays, until

# Real programs that these desktops have, by the identifier that their desktop entry gives them.
XTERM = ("debian-xterm.desktop", "XTerm")
CALCULATOR = ("galculator.desktop", "Galculator")
EDITOR = ("org.xfce.mousepad.desktop", "Mousepad")


class Scene(unittest.TestCase):
    def run(self, result=None):
        self.started = []
        before = len(result.failures) + len(result.errors) if result else 0
        outcome = super().run(result)
        if result and len(result.failures) + len(result.errors) > before:
            for process in self.started:
                print(f"-- {self.id()}: output of {process.process.args}\n{process.output}", file=sys.stderr)
        return outcome

    def keep(self, process):
        self.started.append(process)
        self.addCleanup(process.kill)
        return process

    def process(self, *arguments, environment=None):
        return self.keep(Process(arguments, environment))

    def service(self, *options):
        service = Service(*options)
        self.addCleanup(service.stop)
        return service

    def focus(self, *arguments, **options):
        """The program, which has to live, and to find nothing uncovered, until the test is over."""
        focus = self.keep(Application(*arguments, **options))
        self.addCleanup(self.check_end, focus)
        return focus

    def check_end(self, focus):
        if focus.process.returncode is None:
            self.assertTrue(focus.runs(), f"the program ended by itself with {focus.process.returncode}\n{focus.output}")
            self.assertEqual(focus.stop(), -signal.SIGTERM, focus.output)
        self.assertNotIn("is not covered", focus.output)

    def active_focus(self, *applications, **options):
        """The program in a focus that nobody ends, its window in front."""
        focus = self.focus("--focus-active", applications=applications, **options)
        window = focus.own_window()
        until(lambda: x11.active_window() == window, lambda: f"our window is in front\n{focus.output}")
        return focus

    def window_of(self, process):
        return until(lambda: next(iter(x11.windows(pid=process.pid)), None), lambda: f"{process.process.args} has a window\n{process.output}")

    def xterm(self, *arguments):
        """A terminal's process and window. Its program does nothing and never ends."""
        process = self.process("xterm", *arguments, "-e", "tail", "-f", "/dev/null")
        return process, self.window_of(process)

    def calculator(self):
        process = self.process("galculator")
        return process, self.window_of(process)

    def bring_to_front(self, window):
        x11.activate(window)
        until(lambda: x11.active_window() == window, lambda: f"window {window:#x} is in front, not {x11.active_window() or 0:#x}")

    def assert_covered(self, focus, frame=SCREEN):
        cover = focus.wait_for_cover()
        wait_until_covers(cover, frame)
        return cover

    def assert_uncovered(self, focus):
        focus.wait_for_no_cover()

    def assert_stays_covered(self, focus, frame=SCREEN):
        cover = self.assert_covered(focus, frame)
        stays(lambda: not faults(cover, frame), lambda: f"covered: {faults(cover, frame)}")
        return cover

    def assert_comes_to_be_covered(self, focus):
        """In the end, whatever the window manager still has to do."""
        comes_to_stay(
            lambda: len(focus.covers()) == 1 and not faults(focus.covers()[0]), lambda: f"covered: {[faults(cover) for cover in focus.covers()]}")

    def assert_stays_uncovered(self, focus):
        stays(lambda: not focus.covers(), "no cover")
