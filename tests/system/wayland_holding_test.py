"""What a cover on Wayland withholds: keys, other workspaces, and its own return once it was answered."""
import unittest

from support import accessible
from support.programs import scratch
from support.scene import EDITOR, XTERM
from support.wayland_scene import WaylandScene
from support.waiting import stays, until


class Keyboard(WaylandScene):
    def test_nothing_that_is_typed_reaches_a_blocked_client_of_xwayland(self):
        received = scratch("typed") / "received"
        terminal = self.process("xterm", "-e", "sh", "-c", f"stty -icanon -echo; cat >{received}")
        self.desktop.window_of(terminal)
        self.assert_withheld(terminal, XTERM, received.exists, lambda: received.read_text())

    def test_nothing_that_is_typed_reaches_a_blocked_native_client(self):
        editor = self.native("mousepad")

        def text():
            return "".join(node.get_text(0, -1) for node in accessible.find(editor.pid, "text"))

        self.assert_withheld(editor, EDITOR, lambda: accessible.find(editor.pid, "text"), text)

    def assert_withheld(self, process, application, listens, received):
        until(listens, "the application listens")
        self.bring_to_front(process)
        self.desktop.key("x")
        until(lambda: received() == "x", lambda: f"the application receives what is typed: {received()}")

        focus = self.active_focus(application)
        self.desktop.activate(process.pid)
        self.assert_covered(focus)
        accessible.wait_until_active(focus.pid)
        for _ in range(3):
            self.desktop.key("x")
        stays(lambda: received() == "x" and not self.is_uncovered(focus), lambda: f"the application receives {received()}")

        # What was typed is past the compositor when what came after it has done its work.
        self.desktop.key("Return")
        self.assert_uncovered(focus)
        until(lambda: self.desktop.is_hidden(process.pid), "the application is hidden")
        self.assertEqual(received(), "x")


class Workspaces(WaylandScene):
    def go_to(self, number):
        self.addCleanup(self.desktop.go_to_workspace, 0)
        self.desktop.go_to_workspace(number)

    def test_the_cover_is_on_every_workspace_and_still_there_when_the_user_comes_back(self):
        editor = self.native("mousepad")
        focus = self.active_focus(EDITOR)
        self.desktop.activate(editor.pid)
        self.assert_covered(focus)
        for number in (1, 0):
            self.go_to(number)
            self.assert_stays_covered(focus)
        self.press_return_on_cover(focus)
        until(lambda: self.desktop.is_hidden(editor.pid), "the editor is hidden")
        self.assert_stays_uncovered(focus)

    def test_a_workspace_with_another_application_is_free_and_the_one_with_the_blocked_is_covered_again(self):
        editor = self.native("mousepad")
        focus = self.active_focus(EDITOR)
        self.go_to(1)
        calculator = self.native("galculator")
        self.desktop.activate(calculator.pid)
        until(lambda: self.desktop.is_in_front(calculator.pid), "the calculator is in front")

        self.desktop.activate(editor.pid)
        self.assert_covered(focus)
        self.assertEqual(self.desktop.workspace(), 0)
        self.go_to(1)
        self.desktop.activate(calculator.pid)
        self.assert_uncovered(focus)
        self.go_to(0)
        self.desktop.activate(editor.pid)
        self.assert_covered(focus)
        self.assert_stays_covered(focus)


class Hiding(WaylandScene):
    def test_an_application_of_several_windows_is_hidden_at_once_and_its_cover_does_not_return(self):
        editors = [self.native("mousepad", "--disable-server") for _ in range(3)]
        focus = self.active_focus(EDITOR)
        self.desktop.activate(editors[0].pid)
        self.assert_covered(focus)
        accessible.press(accessible.wait_for(focus.pid, "push button", "I will focus now"))
        self.assert_uncovered(focus)
        for editor in editors:
            self.assertTrue(self.desktop.is_hidden(editor.pid), self.desktop.windows())
        self.assert_stays_uncovered(focus)

    def test_an_application_that_does_not_answer_is_hidden_all_the_same(self):
        editor = self.native("mousepad")
        focus = self.active_focus(EDITOR)
        self.desktop.activate(editor.pid)
        self.assert_covered(focus)
        editor.pause()
        self.addCleanup(editor.resume)
        self.press_return_on_cover(focus)
        until(lambda: self.desktop.is_hidden(editor.pid), "the editor is hidden")
        self.assert_stays_uncovered(focus)


if __name__ == "__main__":
    unittest.main(verbosity=2)
