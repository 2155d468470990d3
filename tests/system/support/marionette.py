"""Firefox without a window, driven over its own protocol: Debian 12 has no driver for it."""
import json
import re
import socket
import urllib.parse

from .browsers import firefox
from .programs import Process
from .waiting import until

_PORT = 2828


class PageError(Exception):
    """An address did not load; the text says what Firefox showed instead."""


class Firefox:
    """`known_to` makes of a command one whose program knows the names (support/names.py). Takes any certificate for good."""

    def __init__(self, known_to):
        self.process = Process(known_to(*map(str, firefox()), "--headless", "--marionette"))
        self.connection = until(self._connected, lambda: f"Firefox listens\n{self.process.output}", 120)
        self._received = b""
        self._read()  # who it is
        self._count = 0
        self._call("WebDriver:NewSession", acceptInsecureCerts=True)

    def _connected(self):
        try:
            return socket.create_connection(("127.0.0.1", _PORT), timeout=120)
        except ConnectionRefusedError:
            return None

    def _read(self):
        """The next message: its length, a colon, and JSON."""
        while True:
            head, colon, rest = self._received.partition(b":")
            if colon and len(rest) >= int(head):
                self._received = rest[int(head):]
                return json.loads(rest[:int(head)])
            part = self.connection.recv(65536)
            assert part, f"Firefox has ended\n{self.process.output}"
            self._received += part

    def _call(self, command, **parameters):
        self._count += 1
        message = json.dumps([0, self._count, command, parameters])
        self.connection.sendall(f"{len(message)}:{message}".encode())
        _, _, error, result = self._read()
        if error:
            raise PageError(f"{error['error']}: {error['message']}")
        return result

    def go(self, url):
        self._call("WebDriver:Navigate", url=url)

    def error_of(self, url):
        """What Firefox says of an address that does not load."""
        try:
            self.go(url)
        except PageError as error:
            description = re.search(r"[?&]d=([^&]*)", str(error))
            assert description, error
            return urllib.parse.unquote(description[1])
        raise AssertionError(f"{url} loads")

    def text(self):
        return self._call("WebDriver:ExecuteScript", script="return document.body.innerText", args=[])["value"]

    def stop(self):
        self.connection.close()
        self.process.kill()
