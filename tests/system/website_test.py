"""Website protection as a user meets it: the installed program, its filter, a real browser, and the service's page that says
why a site does not load. Needs root, as the filter does, and a network namespace of its own (tests/system/CMakeLists.txt)."""
import signal
import unittest

from support import accessible, x11
from support.filtered import SERVER_4, Network, has_rules, run
from support.programs import BIN, scratch, store_key
from support.scene import Scene
from support.waiting import happens, stays, until
from support.webdriver import Browser

BLOCKED, ALLOWED = "https://news.blocked.example/", "https://allowed.example/"


class WebsiteProtection(Scene):
    @classmethod
    def setUpClass(cls):
        cls.prefix = scratch("installed")
        run("cmake", "--install", BIN.parent, "--prefix", cls.prefix)

    def setUp(self):
        self.network = Network()
        self.network.__enter__()
        self.addCleanup(self.network.__exit__, None, None, None)
        self.network.start(self.prefix / "libexec" / "orvanta-filterd")

    def installed_focus(self, *arguments, **options):
        return self.focus(*arguments, program=self.prefix / "bin" / "orvanta-focus", **options)

    def opens_pages_with(self, browser, config):
        """The variables of a desktop on which that browser opens pages."""
        program = scratch("opener") / "this-browser"
        program.write_text(f'#!/bin/sh\nexec {browser.opener()}"$1"\n')
        program.chmod(0o755)
        data = scratch("data")
        (data / "applications").mkdir()
        (data / "applications" / "this-browser.desktop").write_text(
            f"[Desktop Entry]\nType=Application\nName=This browser\nExec={program} %u\nMimeType=x-scheme-handler/http;\n")
        (config / "mimeapps.list").write_text("[Default Applications]\nx-scheme-handler/http=this-browser.desktop\n")
        return {"XDG_DATA_HOME": str(data), "BROWSER": str(program)}

    def activate(self, focus):
        accessible.press(accessible.wait_for(focus.pid, "push button", "Activate website protection"))
        accessible.wait_for(focus.pid, "push button", "Website protection ready")

    def test_a_blocked_site_does_not_load_during_a_task_and_the_service_says_why(self):
        service = self.service()
        store_key(service.key)
        browser = Browser(headless=False, hosts={"*.example": SERVER_4})
        self.addCleanup(browser.stop)
        config = scratch("config")
        focus = self.installed_focus(
            origin=service.origin, domains=["blocked.example"], config=config, environment=self.opens_pages_with(browser, config))
        self.activate(focus)
        self.assertFalse(has_rules())
        for address in (BLOCKED, ALLOWED):
            browser.go(address)
            self.assertEqual(browser.texts("body"), ["welcome"], address)

        service.start_task()
        until(has_rules, lambda: f"the filter is on\n{focus.output}")
        self.bring_to_front(until(lambda: next(iter(x11.windows(name=".*Chromium")), None), "the browser has a window"))
        page = f"{service.origin}/focus/blocked"

        def opened():
            return browser.addresses().count(page)

        def a_visit_opens_one_page():
            before = opened()
            self.assertIn("ERR_CONNECTION_RESET", browser.error_of(BLOCKED))
            until(lambda: opened() > before, lambda: f"the page is open: {browser.addresses()}\n{focus.output}", 90)
            # A busy machine may make a visit of more than the two seconds for which one page is enough.
            return not happens(lambda: opened() > before + 1, 3)

        until(a_visit_opens_one_page, "a visit opens one page", 90)
        before = opened()
        browser.go(ALLOWED)
        self.assertEqual(browser.texts("body"), ["welcome"])

        service.end_task()
        until(lambda: not has_rules(), lambda: f"the filter is off\n{focus.output}")
        browser.go(BLOCKED)
        self.assertEqual(browser.texts("body"), ["welcome"])
        self.assertEqual(opened(), before)

    def test_a_changed_list_is_blocked_while_focus_is_active(self):
        focus = self.installed_focus(domains=["other.example"])
        self.activate(focus)
        focus.stop()
        focus = self.installed_focus("--focus-active", synced=focus.synced, config=focus.config)
        until(lambda: has_rules() and not self.network.loads("http://other.example/"), lambda: f"the list is blocked\n{focus.output}")
        self.assertTrue(self.network.loads("http://blocked.example/"))
        focus.write_lists(domains=["blocked.example"])
        until(lambda: not self.network.loads("http://blocked.example/"), lambda: f"the new list is blocked\n{focus.output}")
        self.assertTrue(self.network.loads("http://other.example/"))

    def test_what_ends_by_itself_is_noticed_and_so_is_its_return(self):
        focus = self.installed_focus()
        self.activate(focus)
        self.network.stop(signal.SIGKILL)
        accessible.wait_for(focus.pid, "push button", "Activate website protection")
        self.network.start(self.prefix / "libexec" / "orvanta-filterd")
        accessible.wait_for(focus.pid, "push button", "Website protection ready")

    def test_focus_that_ends_while_it_is_away_blocks_nothing_after_its_return(self):
        service = self.service()
        store_key(service.key)
        focus = self.installed_focus(origin=service.origin, domains=["blocked.example"])
        self.activate(focus)
        service.start_task()
        until(lambda: has_rules() and not self.network.loads("http://blocked.example/"), lambda: f"the filter is on\n{focus.output}")
        self.network.stop(signal.SIGKILL)
        stays(lambda: self.network.loads("http://blocked.example/"), "everything passes")
        service.end_task()
        accessible.wait_for(focus.pid, name="Focus inactive")
        accessible.wait_for(focus.pid, "push button", "Activate website protection")
        # It comes back with what it knew when it went.
        self.assertTrue(has_rules())
        self.network.start(self.prefix / "libexec" / "orvanta-filterd")
        accessible.wait_for(focus.pid, "push button", "Website protection ready")
        until(lambda: not has_rules(), lambda: f"the filter is off\n{focus.output}")
        self.assertTrue(self.network.loads("http://blocked.example/"))

    def test_without_the_filter_the_program_works_on(self):
        self.network.stop()
        focus = self.installed_focus()
        accessible.press(accessible.wait_for(focus.pid, "push button", "Activate website protection"))
        accessible.wait_for(focus.pid, name="The website filter is not installed on this computer")


if __name__ == "__main__":
    unittest.main(verbosity=2)
