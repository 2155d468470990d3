"""The service as the user meets it: there, away, wanting the right key, and not to be mistaken for another."""
import unittest

from support import accessible
from support.certificates import Authority
from support.programs import clear_key, store_key
from support.scene import XTERM
from support.scripted_service import state
from support.service_scene import BLOCKED_NAME, CONNECTED, KEY_REQUIRED, ServiceScene
from support.waiting import stays, until


class Presence(ServiceScene):
    def test_a_service_that_comes_up_later_is_found(self):
        service = self.service()
        store_key(service.key)
        service.stop()
        focus = self.focus(origin=service.origin)
        self.assertEqual(self.transport_error(focus), "Connection refused")
        service.start()
        accessible.wait_for(focus.pid, name=CONNECTED)
        self.assertFalse(accessible.find(focus.pid, name="Connection refused"))

    def test_a_service_that_goes_down_keeps_the_focus_it_gave(self):
        service = self.service()
        store_key(service.key)
        focus = self.focus(origin=service.origin, applications=[(XTERM[0], BLOCKED_NAME)])
        window = focus.own_window()
        service.start_task()
        self.assert_focused(focus)

        service.stop()
        stays(lambda: accessible.find(focus.pid, name="Orvanta crown"), "focus is active", 7)  # more than two polls
        self.xterm()
        self.assert_covered(focus)
        self.bring_to_front(window)
        self.assert_uncovered(focus)

        service.end_task()
        service.start()
        accessible.wait_for(focus.pid, name="Focus inactive")
        accessible.wait_for(focus.pid, name=CONNECTED)

        service.stop()
        self.assertEqual(self.transport_error(focus), "Connection refused")
        accessible.wait_for(focus.pid, name="Focus inactive")

    def test_a_task_turns_the_settings_into_the_blocking_screen_and_back(self):
        service = self.service()
        store_key(service.key)
        focus = self.focus(origin=service.origin)
        accessible.wait_for(focus.pid, name=CONNECTED)
        for _ in range(2):
            service.start_task()
            self.assert_focused(focus)
            self.assertFalse(accessible.find(focus.pid, "push button", "I will focus now"))
            service.end_task()
            accessible.wait_for(focus.pid, name="Focus inactive")
            self.assertFalse(accessible.find(focus.pid, name="Orvanta crown"))


class Confidentiality(ServiceScene):
    def test_the_key_is_sent_as_a_bearer_token(self):
        store_key("k3y")
        service = self.scripted(state(False))
        self.focus(origin=service.origin)
        until(lambda: service.requests, "the service is asked")
        request = service.requests[0]
        self.assertEqual((request["method"], request["path"], request["authorization"]), ("GET", "/api/focus-state", "Bearer k3y"))
        self.assertNotIn("content-type", request)

    def test_the_key_does_not_follow_a_redirect_to_another_origin(self):
        store_key("k3y")
        elsewhere = self.scripted(state(False))
        service = self.scripted((302, {"Location": f"{elsewhere.origin}/api/focus-state"}, b""))
        focus = self.focus(origin=service.origin)
        accessible.wait_for(focus.pid, name=CONNECTED)
        self.assertEqual(service.requests[0]["authorization"], "Bearer k3y")
        self.assertTrue(elsewhere.requests)
        for request in elsewhere.requests:
            self.assertNotIn("authorization", request)
            self.assertNotIn("k3y", repr(request))

    def test_a_key_with_a_line_break_at_its_end_works(self):
        service = self.service()
        store_key(service.key + "\n")
        focus = self.focus(origin=service.origin)
        accessible.wait_for(focus.pid, name=CONNECTED)

    def test_a_wrong_key_is_told_by_the_service(self):
        service = self.service()
        store_key("not the key")
        focus = self.focus(origin=service.origin)
        accessible.wait_for(focus.pid, name="Orvanta request failed (HTTP 401)")

    def test_without_a_key_nothing_is_asked(self):
        clear_key()
        service = self.scripted(state(True))
        focus = self.focus(origin=service.origin)
        accessible.wait_for(focus.pid, name=KEY_REQUIRED)
        accessible.wait_for(focus.pid, name="Focus inactive")
        store_key("k3y")  # too late for this run
        stays(lambda: not service.requests, "the service is left alone", 4)  # more than one poll
        accessible.wait_for(focus.pid, name=KEY_REQUIRED)

    def test_a_certificate_that_nobody_trusts_is_refused(self):
        store_key("k3y")
        service = self.scripted(state(True), tls=Authority().certify())
        focus = self.focus(origin=service.origin)
        text = self.transport_error(focus)
        self.assertIn("certificate", text)
        self.assertEqual(service.requests, [])
        accessible.wait_for(focus.pid, name="Focus inactive")

    def test_a_certificate_for_another_address_is_refused(self):
        store_key("k3y")
        authority = Authority()
        service = self.scripted(state(True), tls=authority.certify("127.0.0.2"))
        focus = self.focus(origin=service.origin, environment={"SSL_CERT_FILE": str(authority.certificate)})
        text = self.transport_error(focus)
        self.assertIn("certificate", text)
        self.assertEqual(service.requests, [])

    def test_a_certificate_of_an_authority_that_the_user_trusts_is_taken(self):
        authority = Authority()
        certificate, private_key = authority.certify()
        service = self.service("--certificate", certificate, "--private-key", private_key)
        self.assertTrue(service.origin.startswith("https://"), service.origin)
        store_key(service.key)
        focus = self.focus(origin=service.origin, environment={"SSL_CERT_FILE": str(authority.certificate)})
        accessible.wait_for(focus.pid, name=CONNECTED)
        service.start_task()
        self.assert_focused(focus)


if __name__ == "__main__":
    unittest.main(verbosity=2)
