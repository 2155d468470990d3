"""Real browsers and the real packet filter: what is blocked fails at once, what is not loads, over each protocol that a browser
speaks. Needs root, and a network namespace of its own."""
import base64
import hashlib
import json
import socket
import ssl
import subprocess
import sys
import time
import unittest
import urllib.error
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))

from support.far_network import OWN_4, FarNetwork
from support.filtered import SERVER_4, SERVER_6, asks
from support.marionette import Firefox
from support.names import Names
from support.waiting import until
from support.webdriver import Browser

BLOCKED = ["blocked.example"]
REFUSED = ("ERR_CONNECTION_RESET", "ERR_CONNECTION_REFUSED", "ERR_CONNECTION_CLOSED", "ERR_QUIC_PROTOCOL_ERROR", "ERR_QUIC_HANDSHAKE_FAILED")


def timed(work):
    """What it returns. How long it took is printed, for a person to see: a browser waits half a minute and more for what does
    not answer."""
    began = time.monotonic()
    result = work()
    print(f"{result}, after {time.monotonic() - began:.2f} s", file=sys.stderr)
    return result


def setUpModule():
    """One network for all of them."""
    network = FarNetwork()
    network.__enter__()
    unittest.addModuleCleanup(network.__exit__)
    network.start()
    assert network.activate() == 0
    Filtered.network = network


class Filtered(unittest.TestCase):
    def setUp(self):
        self.network.save(BLOCKED)


class AnyBrowser:
    """What holds for each: it knows assert_loads and assert_refused."""

    def test_blocked_sites_fail_and_others_load(self):
        for scheme in ("http", "https"):
            for place in ("", "six."):
                with self.subTest(scheme=scheme, place=place):
                    self.assert_loads(f"{scheme}://{place}allowed.example/")
                    self.assert_refused(f"{scheme}://{place}blocked.example/")
        self.assert_refused("https://a.b.blocked.example/")

    def test_a_connection_from_before_ends(self):
        self.network.save(BLOCKED, enabled=False)
        self.assert_loads("https://www.blocked.example/")
        self.network.save(BLOCKED)
        self.assert_refused("https://www.blocked.example/")

    def test_a_list_may_change_while_the_browser_runs(self):
        self.assert_loads("https://changing.example/")
        self.network.save([*BLOCKED, "changing.example"])
        self.assert_refused("https://changing.example/")
        self.network.save(BLOCKED)
        self.assert_loads("https://changing.example/")


class ChromiumIsFiltered(AnyBrowser, Filtered):
    # Over QUIC the certificate has to be one that the browser knows by its key.
    FORCED = ("quic.blocked.example", "quic.allowed.example", "later.example")

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        key = subprocess.run(["openssl", "x509", "-in", cls.network.certificate, "-pubkey", "-noout"], check=True, capture_output=True).stdout
        bits = subprocess.run(["openssl", "pkey", "-pubin", "-outform", "der"], input=key, check=True, capture_output=True).stdout
        digest = base64.b64encode(hashlib.sha256(bits).digest()).decode()
        cls.browser = Browser(hosts={"six.*": f"[{SERVER_6}]", "*.example": SERVER_4}, arguments=[
            "--origin-to-force-quic-on=" + ",".join(f"{name}:443" for name in cls.FORCED), f"--ignore-certificate-errors-spki-list={digest}"])
        cls.addClassCleanup(cls.browser.stop)

    def assert_loads(self, url):
        self.browser.go(url)
        self.assertEqual(self.browser.evaluate("document.body.innerText"), "welcome", url)

    def assert_refused(self, url):
        """At once, by a reset: a browser that only waited would say that it timed out."""
        error = timed(lambda: self.outcome_of(url))
        self.assertTrue(any(name in error for name in REFUSED), error)

    def outcome_of(self, url):
        """What the driver says, or else the page: of QUIC's errors the driver says nothing, and does not wait for their page."""
        self.browser.go("about:blank")
        try:
            self.browser.go(url)
        except urllib.error.HTTPError as error:
            return json.load(error)["value"]["message"].partition("\n")[0]
        return until(lambda: self.browser.evaluate("document.body ? document.body.innerText : ''"), f"a page for {url}").split("\n")[-1]

    def assert_loads_over_quic(self, host):
        self.browser.go(f"https://{host}/index.html")
        protocol = "performance.getEntriesByType('navigation')[0].nextHopProtocol"
        self.assertEqual([self.browser.evaluate(protocol), self.browser.evaluate("document.body.innerText")], ["h3", "welcome"])

    def test_quic_is_filtered_like_the_rest(self):
        self.assert_loads_over_quic("quic.allowed.example")
        self.assert_refused("https://quic.blocked.example/index.html")

    def test_a_quic_connection_from_before_ends(self):
        self.network.save(BLOCKED, enabled=False)
        self.assert_loads_over_quic("quic.blocked.example")
        self.network.save(BLOCKED)
        self.assert_refused("https://quic.blocked.example/index.html?again")

    def test_a_changed_list_ends_a_quic_connection(self):
        self.assert_loads_over_quic("later.example")
        self.network.save([*BLOCKED, "later.example"])
        self.assert_refused("https://later.example/index.html?again")


class FirefoxIsFiltered(AnyBrowser, Filtered):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        names = Names(cls.network.folder.name, allowed_example=SERVER_4, blocked_example=SERVER_4, www_blocked_example=SERVER_4, a_b_blocked_example=SERVER_4,
                      changing_example=SERVER_4, six_allowed_example=SERVER_6, six_blocked_example=SERVER_6)
        cls.browser = Firefox(names.known_to)
        cls.addClassCleanup(cls.browser.stop)

    def assert_loads(self, url):
        self.browser.go(url)
        self.assertEqual(self.browser.text(), "welcome", url)

    def assert_refused(self, url):
        self.assertEqual(timed(lambda: self.browser.error_of(url)), "The connection to the server was reset while the page was loading.")


class ConnectionsFromBefore(Filtered):
    PORT = 19_000  # of a range from which nobody is given one

    def connect(self, host):
        """Over a port of our choice, which is free again when the connection is closed."""
        connection = socket.socket()
        connection.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, b"\1\0\0\0\0\0\0\0")
        connection.settimeout(60)
        connection.bind((OWN_4, self.PORT))
        connection.connect((SERVER_4, 443))
        context = ssl.create_default_context()
        context.check_hostname, context.verify_mode = False, ssl.CERT_NONE
        secured = context.wrap_socket(connection, server_hostname=host)
        self.addCleanup(secured.close)
        return secured

    def test_a_connection_is_not_taken_for_an_allowed_one_that_had_its_ports(self):
        for attempt in range(5):
            with self.subTest(attempt=attempt):
                self.network.save(BLOCKED)
                with self.connect("allowed.example") as allowed:
                    self.assertTrue(asks(allowed))
                    self.network.save(BLOCKED, enabled=False)
                with self.connect("blocked.example") as another:
                    self.assertTrue(asks(another))
                    self.network.save(BLOCKED)
                    self.assertFalse(asks(another))

    def test_a_connection_that_was_allowed_outlives_any_number_of_changes(self):
        with self.network.connect("allowed.example") as kept, self.network.connect(None) as nameless:
            context = ssl.create_default_context()
            context.check_hostname, context.verify_mode = False, ssl.CERT_NONE
            with context.wrap_socket(nameless) as unnamed:
                for number in range(5):
                    self.assertTrue(asks(kept) and asks(unnamed))
                    self.network.save([*BLOCKED, f"n{number}.example"], enabled=number % 2 == 0)
                self.network.save(BLOCKED)
                self.assertTrue(asks(kept) and asks(unnamed))


if __name__ == "__main__":
    unittest.main(verbosity=2)
