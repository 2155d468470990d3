"""What the scenes on Wayland desktops have beside what every scene has."""
import math
import time

from . import accessible
from .covering import MIDNIGHT
from .quiet import wait_until_quiet
from .scene import Scene
from .waiting import BOUND, stays, until
from .wayland import desktop

BUTTON = ("push button", "I will focus now")


class WaylandScene(Scene):
    @classmethod
    def setUpClass(cls):
        cls.desktop = desktop()

    def native(self, program, *arguments):
        """A Wayland client's process, its window shown."""
        # Without a memory of how its window was left.
        process = self.process(program, *arguments, environment={"GDK_BACKEND": "wayland", "GSETTINGS_BACKEND": "memory"})
        self.desktop.window_of(process)
        return process

    def through_xwayland(self):
        process = self.process("xterm", "-e", "tail", "-f", "/dev/null")
        self.desktop.window_of(process)
        return process

    def active_focus(self, *applications, **options):
        focus = self.focus("--focus-active", applications=applications, **options)
        until(lambda: self.desktop.is_in_front(focus.pid), lambda: f"our window is in front: {self.desktop.windows()}\n{focus.output}")
        accessible.wait_for(focus.pid, name="Orvanta crown")
        return focus

    def bring_to_front(self, process):
        self.desktop.activate(process.pid)
        until(lambda: self.desktop.is_in_front(process.pid), lambda: f"{process.process.args} is in front: {self.desktop.windows()}")

    def faults(self, focus, display=0):
        """What keeps the display from being covered by a screen with a button; nothing if all is well."""
        if not accessible.find(focus.pid, *BUTTON):
            return ["there is no button"]
        return self.colour_faults(self.desktop.displays[display])

    def assert_covered_alone(self, focus, display):
        """The display is the only one that is on, whatever its scale, and is covered to the last pixel of every edge. What glows in the
        middle is left out."""

        def faults():
            if not accessible.find(focus.pid, *BUTTON):
                return "there is no button"
            picture = self.desktop.picture()
            width, height = size = self.desktop.displays[display][2:]
            if picture.size != size:
                return f"the picture is {picture.size} instead of {size}"
            edges = {"left": (0, 0, 1, height), "right": (width - 1, 0, width, height)}
            for side, x in (("left", 0), ("right", width - width // 4)):
                for edge, y in (("top", 0), ("bottom", height - 1)):
                    edges[f"{edge} {side}"] = (x, y, x + width // 4, y + 1)
            found = {name: picture.crop(edge).getcolors(height + width) for name, edge in edges.items()}
            return {name: colours for name, colours in found.items() if {colour for _, colour in colours} != {MIDNIGHT}}

        until(lambda: not faults(), lambda: f"display {display} is covered: {faults()}\n{focus.output}")

    def colour_faults(self, frame):
        """Where the edge of that part of the picture is not the cover's."""
        x, y, width, height = frame
        right, bottom = x + width - 1, y + height - 1
        # The glow of the middle may reach the middle of the edges above and below.
        places = [(x, y), (right, y), (x, bottom), (right, bottom), (x, y + height // 2), (right, y + height // 2), (x + width // 4, bottom)]
        return [f"the colour at {place} is {colour}" for place, colour in zip(places, self.desktop.pixels(places)) if colour != MIDNIGHT]

    def assert_covered(self, focus, display=0):
        until(lambda: not self.faults(focus, display), lambda: f"display {display} is covered: {self.faults(focus, display)}\n{focus.output}")

    def assert_stays_covered(self, focus, display=0):
        self.assert_covered(focus, display)
        frame = self.desktop.displays[display]
        stays(lambda: not self.colour_faults(frame), lambda: f"display {display} stays covered: {self.colour_faults(frame)}")

    def is_uncovered(self, focus):
        return not accessible.find(focus.pid, *BUTTON)

    def assert_uncovered(self, focus):
        until(lambda: self.is_uncovered(focus), lambda: f"the cover is gone\n{focus.output}")

    def assert_stays_uncovered(self, focus):
        stays(lambda: self.is_uncovered(focus), "no cover")

    def assert_stays_uncovered_at_rest(self, focus):
        self.assert_stays_uncovered(focus)
        wait_until_quiet(focus.pid, share_limit=0.4, wake_ups=math.inf)  # its own window may breathe

    def acknowledge(self, focus, *processes):
        """Answers the cover by the keyboard; it does not return."""
        self.press_return_on_cover(focus)
        for process in processes:
            until(lambda process=process: self.desktop.is_hidden(process.pid), lambda: f"it is hidden: {self.desktop.windows()}")
        self.assert_stays_uncovered(focus)

    def press_return_on_cover(self, focus):
        accessible.wait_until_active(focus.pid)  # a cover is shown a moment before it has the keyboard
        deadline = time.monotonic() + BOUND
        while not self.is_uncovered(focus):
            self.assertLess(time.monotonic(), deadline, f"the cover does not answer the keyboard\n{focus.output}")
            self.desktop.key("Return")
            pause = time.monotonic() + 3  # a person would wonder for about so long
            while not self.is_uncovered(focus) and time.monotonic() < pause:
                time.sleep(0.02)
