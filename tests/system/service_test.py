"""The service as the user meets it: there, away, wrong, slow, and pretending to be somebody else."""
import threading
import unittest

from support import accessible
from support.certificates import Authority
from support.programs import clear_key, store_key
from support.scene import XTERM, Scene
from support.scripted_service import ScriptedService, state, status
from support.waiting import stays, until

CONNECTED = "Orvanta connected"
KEY_REQUIRED = "Orvanta API key required"
BLOCKED_NAME = "The terminal"
# What the settings show beside the errors of the status line, while focus is inactive.
OTHER_TEXTS = {
    "", BLOCKED_NAME, "Orvanta Focus", "Focus inactive", "Permissions", "Blocked websites", "No websites blocked", "Blocked applications",
    "No applications blocked", "orvanta-focus", CONNECTED, "Setup required", KEY_REQUIRED,
}


def nonsense(handler):
    handler.wfile.write(b"this is not HTTP at all\r\n\r\n")


def hang_up(handler):
    handler.connection.close()


def promise_more_than_there_is(handler):
    handler.wfile.write(b"HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: 1000\r\n\r\n{\"active\": false")


class ServiceScene(Scene):
    def scripted(self, answer, **options):
        service = ScriptedService(answer, **options)
        self.addCleanup(service.stop)
        return service

    def transport_error(self, focus):
        """The status line's text, which is none that our own program chose."""
        return accessible.wait_for_text(focus.pid, lambda text: text not in OTHER_TEXTS, "an error")

    def assert_focused(self, focus):
        accessible.wait_for(focus.pid, name="Orvanta crown")
        self.assertFalse(accessible.find(focus.pid, name="Focus inactive"))


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


class Misbehaviour(ServiceScene):
    ANSWERS = (
        (status(401), "Orvanta request failed (HTTP 401)"),
        (status(500, b"oh"), "Orvanta request failed (HTTP 500)"),
        (status(300), "Orvanta request failed (HTTP 300)"),
        (status(404), "Orvanta request failed (HTTP 404)"),
        (status(204), "Orvanta's answer could not be read: it is not valid JSON"),
        (status(200, b"<html>"), "Orvanta's answer could not be read: it is not valid JSON"),
        (status(200, b'{"active": true, "inProgressTaskCount": 1}'), 'Orvanta\'s answer could not be read: "policyRevision" is missing'),
        (
            status(200, b'{"active": "yes", "inProgressTaskCount": 1, "policyRevision": 1}'),
            'Orvanta\'s answer could not be read: "active" has an unexpected value',
        ),
    )
    BROKEN = (nonsense, hang_up, promise_more_than_there_is)

    def test_each_wrong_answer_is_told_in_the_status_line(self):
        store_key("a key")
        service = self.scripted(state(False))
        focus = self.focus(origin=service.origin)
        accessible.wait_for(focus.pid, name=CONNECTED)
        for answer, text in self.ANSWERS:
            service.answer = answer
            accessible.wait_for(focus.pid, name=text)
            self.assertFalse(accessible.find(focus.pid, name=CONNECTED))
        accessible.wait_for(focus.pid, name="Focus inactive")

    def test_each_broken_connection_is_told_in_the_status_line(self):
        store_key("a key")
        service = self.scripted(state(False))
        focus = self.focus(origin=service.origin)
        for answer in self.BROKEN:
            service.answer = state(False)
            accessible.wait_for(focus.pid, name=CONNECTED)
            service.answer = answer
            self.assertGreater(len(self.transport_error(focus)), 5)
        service.answer = state(False)
        accessible.wait_for(focus.pid, name=CONNECTED)

    def test_ten_failed_polls_in_a_row_keep_focus(self):
        store_key("a key")
        service = self.scripted(state(True))
        focus = self.focus(origin=service.origin, applications=[XTERM])
        self.assert_focused(focus)
        failed = []

        def next_wrong(_):
            failed.append(self.ANSWERS[len(failed) % len(self.ANSWERS)][0])
            return failed[-1]

        service.answer = next_wrong
        until(lambda: len(failed) >= 11, "ten polls fail", bound=120)  # the eleventh is asked when the tenth has been taken
        self.assert_focused(focus)
        self.xterm()
        self.assert_covered(focus)

    def test_an_answer_that_takes_long_holds_nothing_up_and_is_asked_for_once(self):
        store_key("a key")
        goes_on = threading.Event()
        self.addCleanup(goes_on.set)

        def slow(_):
            goes_on.wait()
            return state(True)

        service = self.scripted(slow)
        focus = self.focus(origin=service.origin)
        focus.own_window()
        until(lambda: service.requests, "the service is asked")
        stays(lambda: len(service.requests) == 1, "one request is under way", 8)  # in which others would have come twice
        accessible.wait_for(focus.pid, name="Focus inactive")
        goes_on.set()
        self.assert_focused(focus)


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
