"""The website filter for real: rules in the kernel, packets in the queue, servers on another machine of the same small
network, ordinary clients. Needs root, and a network namespace of its own (tests/system/CMakeLists.txt)."""
import os
import signal
import ssl
import subprocess
import sys
import threading
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))

from gi.repository import Gio, GLib

from support.filtered import INTERFACE, NAME, PATH, SERVER_4, Network, asks, has_rules, run, tables
from support.waiting import happens, until

BLOCKED = ["blocked.example", "Other.Example:443.", "*.news.example."]


def hello_for(host):
    """The bytes of a ClientHello, as OpenSSL makes them."""
    context = ssl.create_default_context()
    incoming, outgoing = ssl.MemoryBIO(), ssl.MemoryBIO()
    client = context.wrap_bio(incoming, outgoing, server_hostname=host)
    try:
        client.do_handshake()
    except ssl.SSLWantReadError:
        pass
    return outgoing.read()


class WebsiteFilter(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.network = cls.enterClassContext(Network()) if hasattr(cls, "enterClassContext") else Network().__enter__()
        cls.addClassCleanup(lambda: None if hasattr(cls, "enterClassContext") else cls.network.__exit__())
        cls.network.start()
        assert cls.network.activate() == 0

    def setUp(self):
        self.network.save(BLOCKED)

    def test_a_blocked_site_and_its_sub_domains_do_not_load_and_others_do(self):
        for scheme in ("http", "https"):
            for family in ("-4", "-6"):
                for host in ("blocked.example", "www.blocked.example", "BLOCKED.example", "other.example", "a.b.news.example"):
                    with self.subTest(scheme=scheme, family=family, host=host):
                        self.assertFalse(self.network.loads(f"{scheme}://{host}/", family))
                for host in ("allowed.example", "notblocked.example", "example"):
                    with self.subTest(scheme=scheme, family=family, host=host):
                        self.assertTrue(self.network.loads(f"{scheme}://{host}/", family))

    def test_a_hello_that_comes_in_pieces_is_put_together(self):
        for host, size in (("blocked.example", 1), ("blocked.example", 7), ("blocked.example", 100)):
            with self.subTest(host=host, size=size), self.network.connect() as connection:
                hello = hello_for(host)
                with self.assertRaises((ConnectionResetError, BrokenPipeError)):
                    for at in range(0, len(hello), size):
                        connection.sendall(hello[at:at + size])
                    if connection.recv(1) == b"":
                        raise ConnectionResetError
        with self.network.connect() as connection:
            hello = hello_for("allowed.example")
            for at in range(len(hello)):
                connection.sendall(hello[at:at + 1])
            self.assertEqual(connection.recv(1), b"\x16")

    def test_switched_off_everything_loads_and_no_rule_is_left(self):
        self.network.save(BLOCKED, enabled=False)
        self.assertFalse(has_rules())
        self.assertTrue(self.network.loads("https://blocked.example/"))
        self.network.save(BLOCKED)
        self.assertTrue(has_rules())
        self.assertFalse(self.network.loads("https://blocked.example/"))

    def test_a_connection_from_before_ends_with_its_next_request(self):
        self.network.save(BLOCKED, enabled=False)
        with self.network.connect("blocked.example") as connection:
            self.assertTrue(asks(connection))
            self.network.save(BLOCKED)
            self.assertFalse(asks(connection))

    def test_a_changed_list_closes_what_it_blocks_and_nothing_else(self):
        with self.network.connect("first.example") as first, self.network.connect("second.example") as second:
            self.assertTrue(asks(first) and asks(second))
            self.network.save([*BLOCKED, "first.example"])
            self.assertFalse(asks(first))
            self.assertTrue(asks(second))
            self.assertFalse(self.network.loads("https://first.example/"))

    def test_switching_a_hundred_times_loses_no_allowed_page_and_no_connection_that_was_allowed(self):
        lost, asked, stop = [], [], threading.Event()

        def client():
            while not stop.is_set():
                asked.append(1)
                # A connection that named its site just before the filter came on counts as one from before, and ends. As
                # browsers do, the client then makes it anew; between two switches there is time for one that is not hit.
                if not any(self.network.loads("https://allowed.example/") for _ in range(5)):
                    lost.append(1)

        with self.network.connect("allowed.example") as kept:
            self.assertTrue(asks(kept))
            thread = threading.Thread(target=client)
            thread.start()
            try:
                for switch in range(200):
                    self.network.save(BLOCKED, enabled=switch % 2 == 1)
            finally:
                stop.set()
                thread.join()
            self.assertTrue(asks(kept))
        self.assertGreater(len(asked), 0)
        self.assertEqual(len(lost), 0, f"of {len(asked)}")

    def test_the_rules_of_others_are_not_touched(self):
        run("nft", "add", "table", "inet", "somebody_elses")
        self.addCleanup(run, "nft", "delete", "table", "inet", "somebody_elses")
        run("nft", "add", "chain", "inet", "somebody_elses", "output", "{ type filter hook output priority 0; }")
        run("nft", "add", "rule", "inet", "somebody_elses", "output", "counter")
        before = run("nft", "list", "table", "inet", "somebody_elses").count("counter")
        for enabled in (False, True, False, True):
            self.network.save(BLOCKED, enabled=enabled)
        self.assertIn("table inet somebody_elses", tables())
        self.assertEqual(run("nft", "list", "table", "inet", "somebody_elses").count("counter"), before)

    def test_killed_it_lets_everything_pass_and_started_again_it_filters(self):
        self.network.stop(signal.SIGKILL)
        self.assertTrue(self.network.loads("https://blocked.example/"))
        self.network.start()
        self.assertFalse(self.network.loads("https://blocked.example/"))

    def test_stopped_it_leaves_no_rule(self):
        self.network.stop()
        self.assertFalse(has_rules())
        self.network.start()
        self.assertTrue(has_rules())

    def announcements(self):
        """A function that gives what was announced since now."""
        heard = []
        context = GLib.MainContext.default()
        listener = self.network.bus.signal_subscribe(
            NAME, INTERFACE, "Notification", PATH, "com.orvanta.focus.blocked-domain-attempt", Gio.DBusSignalFlags.NONE,
            lambda *arguments: heard.append(arguments[5].unpack()))
        self.addCleanup(self.network.bus.signal_unsubscribe, listener)

        def news():
            while context.iteration(False):
                pass
            return heard
        return news

    def test_a_burst_of_refusals_is_announced(self):
        news = self.announcements()
        # What earlier scenes refused may still be going out, and would make this burst part of theirs.
        self.assertFalse(self.network.loads("https://blocked.example/"))

        def announced():
            self.network.loads("https://blocked.example/")
            return bool(news())
        until(announced, "an announcement")
        heard = news()
        self.assertEqual(set(heard), {("com.orvanta.focus.blocked-domain-attempt",)})
        refused = self.network.call("Statistics")[0]["refused"]
        self.assertGreater(refused, len(heard) - 1)

    def test_each_visit_is_announced_once_however_soon_it_comes(self):
        news = self.announcements()

        def is_silent():
            before = len(news())
            return not happens(lambda: len(news()) > before, 1.5)  # longer than announcements are apart

        def refused():
            return not self.network.loads("http://blocked.example/")

        def a_burst_is_announced_once():
            # A machine that is busy may make a pause where none was meant, and two visits of the attempts.
            until(is_silent, "nothing is announced any more")
            before = len(news())
            self.assertTrue(all(refused() for _ in range(5)))
            until(lambda: len(news()) > before, "an announcement")
            return is_silent() and len(news()) == before + 1
        until(a_burst_is_announced_once, "a burst is announced once")

        def two_visits_are_announced_one_after_the_other():
            until(is_silent, "nothing is announced any more")
            before = len(news())
            self.assertTrue(refused())
            until(lambda: len(news()) > before, "the first visit is announced")
            if happens(lambda: len(news()) > before + 1, 0.4):  # longer than a visit's attempts are apart
                return False
            self.assertTrue(refused())
            until(lambda: len(news()) > before + 1, "so is the second one")
            return is_silent() and len(news()) == before + 2
        until(two_visits_are_announced_one_after_the_other, "two visits are announced")

    def test_it_counts_what_it_saw(self):
        before = self.network.call("Statistics")[0]
        self.assertFalse(self.network.loads("https://blocked.example/"))
        self.assertTrue(self.network.loads("https://allowed.example/"))
        after = self.network.call("Statistics")[0]
        self.assertEqual(after["active"], 1)
        self.assertGreater(after["refused"], before["refused"])
        self.assertEqual(after["allowed"], before["allowed"] + 1)
        self.network.save(BLOCKED, enabled=False)
        self.assertEqual(self.network.call("Statistics")[0]["active"], 0)

    def test_a_record_with_an_unknown_key_or_a_wrong_value_changes_nothing(self):
        before = self.network.call("LoadPreferences")
        for extra in ({"surprise": GLib.Variant("b", True)}, {"grade": GLib.Variant("s", "x")}, {"grade": GLib.Variant("i", 7)},
                      {"localizedDescription": GLib.Variant("s", "x" * 10000)}, {"providerConfiguration": GLib.Variant("i", 1)}):
            with self.subTest(extra=list(extra)), self.assertRaises(GLib.Error):
                self.network.save(["another.example"], extra=extra)
            self.assertEqual(self.network.call("LoadPreferences"), before)
        self.assertEqual(before[0]["providerConfiguration"]["vendorConfiguration"]["blockedDomains"], BLOCKED)

    def test_nobody_else_may_change_anything(self):
        before = self.network.call("LoadPreferences")
        for method, arguments in (("SavePreferences", ["{}"]), ("Activate", [NAME]), ("RemoveDnsProxy", [])):
            done = subprocess.run(
                ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", "gdbus", "call", "--system", "--dest", NAME, "--object-path", PATH,
                 "--method", f"{INTERFACE}.{method}", *arguments], capture_output=True, text=True)
            self.assertNotEqual(done.returncode, 0, method)
            self.assertIn("AccessDenied", done.stderr)
        self.assertEqual(self.network.call("LoadPreferences"), before)

    def test_a_million_domains_are_taken(self):
        self.network.save([f"n{number}.example" for number in range(1_000_000)])
        self.assertFalse(self.network.loads("https://www.n999999.example/"))
        self.assertTrue(self.network.loads("https://blocked.example/"))

    def test_it_explains_itself(self):
        def explained(address):
            program = Path(os.environ["ORVANTA_BIN"], "orvanta-filterd")
            return run(program, "--explain", address, env={**os.environ, "STATE_DIRECTORY": str(self.network.state)})
        self.assertIn("is blocked by the entry blocked.example,", explained("https://www.blocked.example/page"))
        self.assertIn("is not blocked", explained("allowed.example"))
        self.assertIn("names no host", explained("nonsense"))

    def test_what_goes_round_it_is_known(self):
        # Another port, and a hello without a name: both load, and the second one is counted.
        self.assertTrue(self.network.loads("http://blocked.example:8080/"))
        before = self.network.call("Statistics")[0]["undecided"]
        self.assertTrue(self.network.loads(f"https://{SERVER_4}/"))
        self.assertGreater(self.network.call("Statistics")[0]["undecided"], before)


if __name__ == "__main__":
    unittest.main(verbosity=2)
