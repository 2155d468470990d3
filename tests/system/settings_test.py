"""The settings, worked through the accessibility tree and the keyboard alone."""
import unittest

from support import accessible, x11
from support.programs import clear_key, store_key
from support.scene import CALCULATOR, XTERM, Scene
from support.waiting import stays, until

# What a person works with, as a screen reader names it.
CONTROLS = {"push button", "text", "list item", "list", "check box", "radio button", "slider", "combo box", "link", "image", "dialog"}


def button(focus, name):
    return accessible.wait_for(focus.pid, "push button", name)


def remove_of(focus, name):
    """The Remove of the row with that name."""

    def found():
        for row in accessible.find(focus.pid, "list item", name):
            for node in accessible.walk(row):
                try:
                    if node.get_role_name() == "push button" and node.get_name() == "Remove":
                        return node
                except Exception:  # a row that is just going
                    continue
        return None

    return until(found, lambda: f"{name} can be removed; there is {accessible.texts(focus.pid)}")


def is_focused(node):
    return node.get_state_set().contains(accessible.Atspi.StateType.FOCUSED)


def focused(focus):
    """Role and name of what has the keyboard; None if nothing does. A sheet has it as well when something in it has."""
    found = None
    for node in accessible.find(focus.pid):
        try:
            if is_focused(node) and node.get_role_name() in CONTROLS:
                found = node.get_role_name(), node.get_name()
        except Exception:
            continue
    return found


class SettingsScene(Scene):
    def in_front(self, **options):
        focus = self.focus(**options)
        window = focus.own_window()
        x11.activate(window)
        until(lambda: x11.has_keyboard(window), "our window has the keyboard")
        accessible.wait_until_active(focus.pid)
        return focus

    def wait_for_keyboard(self, focus, role, name):
        until(lambda: focused(focus) == (role, name), lambda: f"{role} {name} has the keyboard; {focused(focus)} has it")

    def wait_for_no_sheet(self, focus):
        until(lambda: not accessible.find(focus.pid, "push button", "Cancel"), "the sheet is gone")

    def wait_until_gone(self, focus, name):
        until(lambda: not accessible.find(focus.pid, name=name), lambda: f"{name} is gone; there is {accessible.texts(focus.pid)}")

    def type_domain(self, focus, text):
        accessible.press(button(focus, "Add to blocked websites"))
        self.wait_for_keyboard(focus, "text", "Domain")
        x11.write(text)

    def add_website(self, focus, text):
        self.type_domain(focus, text)
        accessible.press(button(focus, "Block website"))
        self.wait_for_no_sheet(focus)

    def block_application(self, focus, search, name):
        accessible.press(button(focus, "Add to blocked applications"))
        self.wait_for_keyboard(focus, "text", "Search applications")
        x11.write(search)
        accessible.press(accessible.wait_for(focus.pid, "list item", name))
        accessible.press(button(focus, "Block application"))
        self.wait_for_no_sheet(focus)


class Websites(SettingsScene):
    def test_websites_are_added_rejected_and_removed(self):
        focus = self.in_front()
        accessible.wait_for(focus.pid, name="No websites blocked")
        self.add_website(focus, " HTTPS://News.Example/front ")
        accessible.wait_for(focus.pid, "list item", "news.example")
        self.add_website(focus, "chat.example")
        focus.wait_for_stored([], ["chat.example", "news.example"])

        self.add_website(focus, "localhost")
        stays(lambda: focus.stored_lists() == ([], ["chat.example", "news.example"]), "what is no domain is dropped", 0.5)

        accessible.press(remove_of(focus, "chat.example"))
        focus.wait_for_stored([], ["news.example"])
        self.wait_until_gone(focus, "chat.example")
        accessible.press(remove_of(focus, "news.example"))
        focus.wait_for_stored([])
        accessible.wait_for(focus.pid, name="No websites blocked")

    def test_only_spaces_cannot_be_blocked(self):
        focus = self.in_front()
        self.type_domain(focus, "   ")
        accessible.press(button(focus, "Block website"))
        x11.key("Return")
        stays(lambda: accessible.find(focus.pid, "push button", "Cancel"), "the sheet stays", 0.5)
        x11.key("Escape")
        self.wait_for_no_sheet(focus)

    def test_beneath_the_sheet_nothing_is_read_out(self):
        focus = self.in_front(domains=["one.example"])
        accessible.wait_for(focus.pid, "list item", "one.example")
        self.type_domain(focus, "x")
        self.assertFalse(accessible.find(focus.pid, name="one.example"))
        self.assertFalse(accessible.find(focus.pid, "push button", "Add to blocked websites"))
        x11.key("Escape")
        accessible.wait_for(focus.pid, "list item", "one.example")

    def test_a_change_from_another_machine_appears_in_the_open_window(self):
        focus = self.in_front(domains=["one.example"])
        accessible.wait_for(focus.pid, "list item", "one.example")
        focus.write_lists([CALCULATOR], ["one.example", "two.example"])
        accessible.wait_for(focus.pid, "list item", "two.example")
        accessible.wait_for(focus.pid, "list item", CALCULATOR[1])
        accessible.press(remove_of(focus, "two.example"))
        focus.wait_for_stored([CALCULATOR[0]], ["one.example"])


class Applications(SettingsScene):
    def test_an_application_is_searched_picked_blocked_covered_and_removed(self):
        service = self.service()
        store_key(service.key)
        self.addCleanup(clear_key)
        focus = self.in_front(origin=service.origin)
        self.block_application(focus, "xterm", "XTerm")
        focus.wait_for_stored([XTERM[0]])
        accessible.wait_for(focus.pid, "list item", "XTerm")

        _, terminal = self.xterm()
        service.start_task()
        accessible.wait_for(focus.pid, name="Orvanta crown")
        x11.activate(focus.own_window())
        x11.activate(terminal)
        self.assert_covered(focus)
        x11.key("Return")
        self.assert_uncovered(focus)

        service.end_task()
        accessible.press(remove_of(focus, "XTerm"))
        focus.wait_for_stored([])
        accessible.wait_for(focus.pid, name="No applications blocked")

    def test_nothing_is_blocked_before_anything_is_chosen(self):
        focus = self.in_front()
        accessible.press(button(focus, "Add to blocked applications"))
        accessible.wait_for(focus.pid, "list item", CALCULATOR[1])
        accessible.press(button(focus, "Block application"))
        stays(lambda: accessible.find(focus.pid, "push button", "Cancel"), "the sheet stays", 0.5)
        accessible.press(button(focus, "Cancel"))
        self.wait_for_no_sheet(focus)
        self.assertEqual(focus.stored_lists()[0], [])

    def test_the_program_does_not_offer_itself(self):
        focus = self.in_front()
        accessible.press(button(focus, "Add to blocked applications"))
        accessible.wait_for(focus.pid, "list item", CALCULATOR[1])
        x11.write("orvanta")
        until(lambda: not accessible.find(focus.pid, "list item"), "nothing of that name is offered")

    def test_an_application_that_is_not_installed_keeps_its_row(self):
        focus = self.in_front(applications=[("org.example.Vanished.desktop", "Vanished")])
        accessible.press(remove_of(focus, "Vanished"))
        focus.wait_for_stored([])


class Keyboard(SettingsScene):
    def test_the_whole_program_is_worked_without_a_mouse(self):
        focus = self.in_front()
        x11.key("Tab")
        self.wait_for_keyboard(focus, "push button", "Activate website protection")
        x11.key("space")
        accessible.wait_for(focus.pid, name="Install Orvanta Focus in Applications first")  # a build folder is no place for it
        x11.key("Tab")
        self.wait_for_keyboard(focus, "push button", "Add to blocked websites")
        x11.key("Return")
        self.wait_for_keyboard(focus, "text", "Domain")
        x11.write("a.example")
        x11.key("Return")
        accessible.wait_for(focus.pid, "list item", "a.example")
        self.wait_for_keyboard(focus, "push button", "Add to blocked websites")
        x11.key("Tab")
        self.wait_for_keyboard(focus, "push button", "Remove")
        x11.key("Tab")
        self.wait_for_keyboard(focus, "push button", "Add to blocked applications")
        x11.key("space")
        self.wait_for_keyboard(focus, "text", "Search applications")
        x11.write("debian-xterm")  # which is in its identifier alone
        until(lambda: [node.get_name() for node in accessible.find(focus.pid, "list item")] == ["XTerm"], "XTerm alone is found")
        x11.key("Down")
        self.wait_for_keyboard(focus, "list", "Applications")
        x11.key("Return")
        focus.wait_for_stored([XTERM[0]], ["a.example"])
        self.wait_for_keyboard(focus, "push button", "Add to blocked applications")
        x11.key("shift+Tab")
        self.wait_for_keyboard(focus, "push button", "Remove")
        x11.key("space")
        focus.wait_for_stored([XTERM[0]])
        self.wait_for_keyboard(focus, "push button", "Add to blocked websites")
        x11.key("Return")
        self.wait_for_keyboard(focus, "text", "Domain")
        x11.write("half")
        x11.key("Escape")
        self.wait_for_no_sheet(focus)
        self.assertEqual(focus.stored_lists(), ([XTERM[0]], []))
        x11.key("ctrl+q")
        self.assertEqual(focus.wait(), 0)


class Names(SettingsScene):
    def assert_named(self, focus):
        root = accessible.application(focus.pid)
        seen = 0
        for node in accessible.walk(root):
            try:
                role, name, actions = node.get_role_name(), node.get_name(), node.get_n_actions()
                showing = accessible.is_showing(node)
            except Exception:
                continue
            if showing and (role in CONTROLS or actions > 0):
                seen += 1
                self.assertTrue(name, f"a {role} without a name")
        return seen

    def test_every_control_has_a_name(self):
        focus = self.in_front(domains=["one.example"], applications=[XTERM])
        accessible.wait_for(focus.pid, "list item", "XTerm")
        self.assertGreaterEqual(self.assert_named(focus), 6)
        self.type_domain(focus, "x")
        self.assertGreaterEqual(self.assert_named(focus), 3)
        x11.key("Escape")
        self.wait_for_no_sheet(focus)
        accessible.press(button(focus, "Add to blocked applications"))
        accessible.wait_for(focus.pid, "list item")
        self.assertGreaterEqual(self.assert_named(focus), 4)


class FocusComes(SettingsScene):
    def test_a_sheet_goes_when_focus_becomes_active_and_the_settings_come_back_whole(self):
        service = self.service()
        store_key(service.key)
        self.addCleanup(clear_key)
        focus = self.in_front(origin=service.origin, domains=["one.example"])
        accessible.wait_for(focus.pid, "list item", "one.example")
        self.type_domain(focus, "half.example")
        service.start_task()
        accessible.wait_for(focus.pid, name="Orvanta crown")
        self.assertFalse(accessible.find(focus.pid, name="Block website"))
        service.end_task()
        accessible.wait_for(focus.pid, "list item", "one.example")
        accessible.wait_for(focus.pid, name="Focus inactive")
        self.assertFalse(accessible.find(focus.pid, name="Block website"))
        self.assertEqual(focus.stored_lists(), ([], ["one.example"]))
        self.add_website(focus, "two.example")
        focus.wait_for_stored([], ["one.example", "two.example"])


class Languages(SettingsScene):
    def test_the_program_speaks_the_users_language(self):
        for locale, permissions, add in (
            ("de_DE.UTF-8", "Berechtigungen", "Hinzufügen zu: blockierte websites"),
            ("es_ES.UTF-8", "Permisos", "Añadir a sitios web bloqueados"),
            ("fr_FR.UTF-8", "Autorisations", "Ajouter à : sites web bloqués"),
            ("zh_CN.UTF-8", "权限", "添加到已屏蔽的网站"),
            ("ar_EG.UTF-8", "الأذونات", "إضافة إلى المواقع المحظورة"),
        ):
            with self.subTest(locale=locale):
                focus = self.focus(environment={"LC_ALL": locale})
                accessible.wait_for(focus.pid, name=permissions)
                plus = accessible.wait_for(focus.pid, "push button", add)
                x, _, width, _ = x11.geometry_of(focus.own_window())
                stands_on_the_left = accessible.centre(plus)[0] < x + width / 2
                self.assertEqual(stands_on_the_left, locale.startswith("ar"))
                focus.stop()


if __name__ == "__main__":
    unittest.main(verbosity=2)
