"""The compositor ends under the program: it ends as well, says why, and has lost nothing."""
import os
import re
import signal
import socket
import struct
import unittest
from pathlib import Path

from support import accessible
from support.programs import Application
from support.scene import EDITOR
from support.wayland import desktop
from support.wayland_scene import WaylandScene


def compositor():
    """Its process, by the other end of its socket."""
    place = Path(os.environ["XDG_RUNTIME_DIR"]) / os.environ["WAYLAND_DISPLAY"]
    with socket.socket(socket.AF_UNIX) as connection:
        connection.connect(str(place))
        pid, _, _ = struct.unpack("3i", connection.getsockopt(socket.SOL_SOCKET, socket.SO_PEERCRED, struct.calcsize("3i")))
    return pid


class Ending(WaylandScene):
    def test_the_program_ends_with_a_clear_line_and_its_settings_are_kept(self):
        editor = self.native("mousepad")
        focus = self.keep(Application("--focus-active", applications=[EDITOR]))
        accessible.wait_for(focus.pid, name="Orvanta crown")
        focus.wait_for_stored([EDITOR[0]])
        desktop().activate(editor.pid)
        self.assert_covered(focus)
        before = focus.settings_file.read_text()

        os.kill(compositor(), signal.SIGKILL)
        self.assertGreater(focus.wait(), 0, focus.output)  # neither a success nor a crash
        self.assertRegex(focus.output, re.compile(r"The (Wayland|X11) connection broke"))
        self.assertEqual(focus.settings_file.read_text(), before)
        self.assertEqual(focus.stored_lists(), ([EDITOR[0]], []))


if __name__ == "__main__":
    unittest.main(verbosity=2)
