"""The cover: what brings it, and what does not take it away."""
import unittest

from support import accessible, x11
from support.client import Client, Fighter, install_entry
from support.covering import SCREEN, corners, faults
from support.programs import scratch, store_key
from support.scene import XTERM, Scene
from support.waiting import stays, until


class Appearing(Scene):
    def test_a_full_screen_application_is_covered(self):
        focus = self.active_focus(XTERM)
        _, terminal = self.xterm("-fullscreen")
        cover = self.assert_stays_covered(focus)
        self.assertEqual(x11.geometry_of(terminal), SCREEN)
        self.assertEqual(x11.stacking()[-1], cover)

    def test_nothing_that_is_typed_reaches_the_blocked_application(self):
        received = scratch("typed") / "received"
        process = self.process("xterm", "-e", "sh", "-c", f"stty -icanon; cat >{received}")
        terminal = self.window_of(process)
        until(received.exists, "the terminal listens")
        self.bring_to_front(terminal)
        x11.write("before")
        until(lambda: received.read_text() == "before", lambda: f"the terminal receives what is typed: {received.read_text()}")

        focus = self.active_focus(XTERM)
        x11.activate(terminal)
        self.assert_covered(focus)
        x11.write("behind")
        self.assert_stays_covered(focus)
        self.assertEqual(received.read_text(), "before")

    def test_a_blocked_application_that_is_activated_again_is_covered_again(self):
        _, terminal = self.xterm()
        focus = self.active_focus(XTERM)
        x11.activate(terminal)
        cover = self.assert_covered(focus)
        for _ in range(5):
            x11.activate(terminal)
            self.assertEqual(self.assert_covered(focus), cover)
        self.assert_stays_covered(focus)

    def test_an_application_activated_on_another_desktop_is_covered_there(self):
        x11.switch_desktop(1)
        _, terminal = self.xterm()
        x11.switch_desktop(0)
        self.addCleanup(x11.switch_desktop, 0)
        focus = self.active_focus(XTERM)
        x11.activate(terminal)
        self.assert_covered(focus)
        self.assertEqual(x11.current_desktop(), 1)
        self.assert_stays_covered(focus)

    def test_the_cover_is_on_every_desktop(self):
        _, terminal = self.xterm()
        focus = self.active_focus(XTERM)
        x11.activate(terminal)
        self.assert_covered(focus)
        self.addCleanup(x11.switch_desktop, 0)
        for number in (1, 3, 0):
            x11.switch_desktop(number)
            until(lambda number=number: x11.current_desktop() == number, "the desktop is switched")
            self.assert_stays_covered(focus)

    def test_focus_that_begins_over_a_blocked_application_shows_no_cover_until_the_next_activation(self):
        service = self.service()
        store_key(service.key)
        _, calculator = self.calculator()
        focus = self.focus(origin=service.origin, applications=[XTERM])
        focus.own_window()
        accessible.wait_for(focus.pid, name="Orvanta connected")
        _, terminal = self.xterm()
        until(lambda: x11.active_window() == terminal, "the terminal is in front")
        service.start_task()
        accessible.wait_for(focus.pid, name="Orvanta crown")
        self.assert_stays_uncovered(focus)
        self.bring_to_front(calculator)
        x11.activate(terminal)
        self.assert_covered(focus)

    def test_the_list_is_asked_afresh_at_every_activation(self):
        _, calculator = self.calculator()
        _, terminal = self.xterm()
        focus = self.active_focus(XTERM)
        x11.activate(terminal)
        self.assert_covered(focus)

        focus.write_lists([])
        focus.wait_for_stored([])
        self.bring_to_front(calculator)
        self.assert_uncovered(focus)
        self.bring_to_front(terminal)
        self.assert_stays_uncovered(focus)

        focus.write_lists([XTERM])
        focus.wait_for_stored([XTERM[0]])
        self.assert_stays_uncovered(focus)
        self.bring_to_front(calculator)
        x11.activate(terminal)
        self.assert_covered(focus)


class Lasting(Scene):
    def test_a_window_without_identity_leaves_the_cover(self):
        _, terminal = self.xterm()
        focus = self.active_focus(XTERM)
        x11.activate(terminal)
        cover = self.assert_covered(focus)
        stays(lambda: not faults(cover), "covered", 3)  # longer than the program looks after a new cover
        stranger = Client()
        self.addCleanup(stranger.close)
        x11.activate(stranger.id)
        until(lambda: x11.active_window() == stranger.id, "the stranger is in front")
        stays(lambda: focus.covers() == [cover], "the cover is there")
        for place in corners(SCREEN):
            self.assertTrue(x11.is_seen_at(cover, *place))

    def test_focus_that_ends_leaves_the_cover_until_another_application_comes(self):
        service = self.service()
        store_key(service.key)
        _, calculator = self.calculator()
        _, terminal = self.xterm()
        focus = self.focus(origin=service.origin, applications=[XTERM])
        focus.own_window()
        service.start_task()
        accessible.wait_for(focus.pid, name="Orvanta crown")
        x11.activate(terminal)
        self.assert_covered(focus)

        service.end_task()
        accessible.wait_for(focus.pid, name="Focus inactive")
        self.assert_stays_covered(focus)
        x11.activate(terminal)  # the application that the cover is for keeps it
        stays(focus.covers, "the cover is there")
        self.bring_to_front(calculator)
        self.assert_uncovered(focus)
        self.bring_to_front(terminal)
        self.assert_stays_uncovered(focus)

    def test_no_key_and_no_request_to_close_takes_the_cover_away(self):
        _, terminal = self.xterm()
        focus = self.active_focus(XTERM)
        x11.activate(terminal)
        cover = self.assert_covered(focus)
        for attempt in (
            lambda: x11.key("Escape"),
            lambda: x11.key("alt+F4"),
            lambda: x11.close(cover),
            lambda: x11.key("ctrl+w"),
            lambda: x11.iconify(cover),
        ):
            attempt()
            self.assertEqual(self.assert_stays_covered(focus), cover)
        self.assertTrue(x11.is_viewable(terminal))

    def test_an_application_that_fights_for_the_front_stays_covered(self):
        install_entry("org.example.Fighter.desktop", "Fighter")
        focus = self.active_focus(("org.example.Fighter.desktop", "Fighter"))
        fighter = Fighter("Fighter")
        self.addCleanup(fighter.close)
        cover = self.assert_covered(focus)
        fighter.fight()
        self.addCleanup(fighter.give_up)
        x, y, width, height = x11.geometry_of(fighter.id)
        place = (x + width // 2, y + height // 2)
        until(lambda: fighter.pushes >= 100 or not x11.is_seen_at(cover, *place), "the fight goes on")
        self.assertTrue(x11.is_seen_at(cover, *place))
        fighter.give_up()
        self.assert_comes_to_be_covered(focus)  # the window manager may not have seen all of it yet

    def test_a_full_screen_application_that_fights_for_the_front_ends_up_covered(self):
        install_entry("org.example.Fighter.desktop", "Fighter")
        focus = self.active_focus(("org.example.Fighter.desktop", "Fighter"))
        fighter = Fighter("Fighter")
        self.addCleanup(fighter.close)
        fighter.go_full_screen()
        self.assert_covered(focus)
        fighter.fight()
        self.addCleanup(fighter.give_up)
        until(lambda: fighter.pushes >= 100, "the fight goes on")
        fighter.give_up()
        self.assert_comes_to_be_covered(focus)  # the window manager may not have seen all of it yet

    def test_a_program_that_was_stopped_covers_as_soon_as_it_goes_on(self):
        _, terminal = self.xterm("-fullscreen")
        focus = self.active_focus(XTERM)
        focus.pause()
        self.addCleanup(focus.resume)
        self.bring_to_front(terminal)
        self.assertFalse(focus.covers())
        focus.resume()
        cover = self.assert_covered(focus)

        focus.pause()
        x11.activate(terminal)
        until(lambda: x11.has_keyboard(terminal), "the terminal has taken the keyboard")
        focus.resume()
        self.assertEqual(self.assert_stays_covered(focus), cover)


if __name__ == "__main__":
    unittest.main(verbosity=2)
