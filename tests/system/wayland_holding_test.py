"""What a cover on Wayland withholds: keys, other workspaces, and its own return once it was answered."""
import unittest

from support import accessible
from support.programs import scratch
from support.scene import CALCULATOR, EDITOR, XTERM
from support.wayland_scene import BUTTON, WaylandScene
from support.waiting import stays, until


class Keyboard(WaylandScene):
    def test_nothing_that_is_typed_reaches_a_blocked_client_of_xwayland(self):
        received = scratch("typed") / "received"
        terminal = self.process("xterm", "-e", "sh", "-c", f"stty -icanon -echo; cat >{received}")
        self.desktop.window_of(terminal)
        until(received.exists, "the terminal listens")
        self.assert_withheld(terminal, XTERM, received.read_text)

    def test_nothing_that_is_typed_reaches_a_blocked_native_client(self):
        editor = self.native("mousepad")
        until(lambda: accessible.find(editor.pid, "text"), "the editor shows its text")
        self.assert_withheld(editor, EDITOR, lambda: "".join(node.get_text(0, -1) for node in accessible.find(editor.pid, "text")))

    def assert_withheld(self, process, application, received):
        self.bring_to_front(process)
        self.desktop.key("x")
        until(lambda: received() == "x", lambda: f"the application receives what is typed: {received()}")

        focus = self.active_focus(application)
        self.desktop.activate(process.pid)
        self.assert_covered(focus)
        accessible.wait_until_active(focus.pid)
        for _ in range(3):
            self.desktop.key("x")
        stays(lambda: received() == "x", lambda: f"the application receives {received()}")
        self.assertFalse(self.is_uncovered(focus))

        # What was typed is past the compositor when what came after it has done its work.
        self.desktop.key("Return")
        self.assert_uncovered(focus)
        until(lambda: self.desktop.is_hidden(process.pid), "the application is hidden")
        self.assertEqual(received(), "x")


class Workspaces(WaylandScene):
    def go_to(self, workspace, process):
        self.desktop.go_to_workspace(workspace)
        self.desktop.window_of(process)  # it is shown
        self.desktop.activate(process.pid)

    def test_the_cover_is_on_every_workspace_and_goes_for_another_application_alone(self):
        self.addCleanup(self.desktop.go_to_workspace, 0)
        editor = self.native("mousepad")
        focus = self.active_focus(EDITOR)
        self.desktop.go_to_workspace(1)
        calculator = self.native("galculator")
        self.bring_to_front(calculator)

        self.desktop.activate(editor.pid)
        self.assert_covered(focus)
        self.assertEqual(self.desktop.workspace(), 0)
        self.go_to(1, calculator)
        self.assert_uncovered(focus)
        self.go_to(0, editor)
        self.assert_covered(focus)

        calculator.stop()
        until(lambda: not self.desktop.window(calculator.pid), "the calculator is gone")
        for number in (1, 0):
            self.desktop.go_to_workspace(number)
            self.assert_stays_covered(focus)
        self.acknowledge(focus, editor)


class Hiding(WaylandScene):
    def test_every_window_is_hidden_before_the_cover_goes_also_one_that_does_not_answer_and_the_cover_does_not_return(self):
        editors = [self.native("mousepad", "--disable-server") for _ in range(3)]
        focus = self.active_focus(EDITOR, CALCULATOR)
        self.desktop.activate(editors[0].pid)
        self.assert_covered(focus)
        editors[1].pause()
        self.addCleanup(editors[1].resume)
        accessible.press(accessible.wait_for(focus.pid, *BUTTON))
        self.assert_uncovered(focus)
        for editor in editors:
            self.assertTrue(self.desktop.is_hidden(editor.pid), self.desktop.windows())
        self.assert_stays_uncovered(focus)


if __name__ == "__main__":
    unittest.main(verbosity=2)
