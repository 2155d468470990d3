"""A service that answers wrongly, late or not at all: told in the status line, and never a reason to change focus."""
import threading
import unittest

from support import accessible
from support.programs import store_key
from support.scene import XTERM
from support.scripted_service import state, status
from support.service_scene import CONNECTED, ServiceScene
from support.waiting import stays, until


def nonsense(handler):
    handler.wfile.write(b"this is not HTTP at all\r\n\r\n")


def hang_up(handler):
    handler.connection.close()


def promise_more_than_there_is(handler):
    handler.wfile.write(b"HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: 1000\r\n\r\n{\"active\": false")


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


if __name__ == "__main__":
    unittest.main(verbosity=2)
