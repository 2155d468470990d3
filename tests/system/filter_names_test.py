"""Answers to name look-ups while the website filter is on: a real resolver's client (dig) asks a real name server on another
machine. Needs root, and a network namespace of its own (tests/system/CMakeLists.txt)."""
import subprocess
import sys
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))

from support.filtered import SERVER_4, SERVER_6, Network, run
from support.waiting import until

BLOCKED = ["blocked.example"]
CANARY = "use-application-dns.net"

# An HTTPS record (65) with the priority 1, the name itself as its target, and "alpn" with "h2".
RECORD_BYTES = "0001" "00" "0001" "0003" "026832"

ZONES = [f"--dns-rr={host},65,{RECORD_BYTES}" for host in ("blocked.example", "www.blocked.example", "allowed.example")] + [
    f"--host-record={host},10.9.8.7,fd00::9" for host in ("blocked.example", "www.blocked.example", "allowed.example", CANARY)]


class Answers(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.network = Network()
        cls.network.__enter__()
        cls.addClassCleanup(cls.network.__exit__)
        cls.network._start(*cls.network.elsewhere, "dnsmasq", "--keep-in-foreground", "--conf-file=/dev/null", "--no-resolv", "--no-hosts",
                           "--bind-interfaces", f"--listen-address={SERVER_4}", f"--listen-address={SERVER_6}", "--pid-file=", "--user=root",
                           "--edns-packet-max=4096", *ZONES)
        until(lambda: cls.look_up("allowed.example", "A")[1], "the name server")
        cls.network.start()
        assert cls.network.activate() == 0

    def setUp(self):
        self.network.save(BLOCKED)

    @staticmethod
    def look_up(name, kind, server=SERVER_4, *options):
        """The outcome and the records that dig reports."""
        done = subprocess.run(["dig", f"@{server}", name, kind, "+time=20", "+tries=1", *options], capture_output=True, text=True)
        status = next((line.split("status: ")[1].split(",")[0] for line in done.stdout.splitlines() if "status: " in line), None)
        records = [line for line in done.stdout.splitlines() if line and not line.startswith(";")]
        assert "malformed" not in done.stdout + done.stderr, done.stdout
        return status, records

    def for_each_server(self):
        for server in (SERVER_4, SERVER_6):
            with self.subTest(server=server):
                yield server

    def test_the_name_that_asks_for_a_browsers_own_name_service_does_not_exist(self):
        for server in self.for_each_server():
            for kind in ("A", "AAAA"):
                self.assertEqual(self.look_up(CANARY, kind, server), ("NXDOMAIN", []))
            self.assertEqual(self.look_up(CANARY.upper(), "A", server), ("NXDOMAIN", []))

    def test_a_blocked_site_has_no_https_record_and_others_keep_theirs(self):
        for server in self.for_each_server():
            for host in ("blocked.example", "www.blocked.example", "BLOCKED.example"):
                self.assertEqual(self.look_up(host, "TYPE65", server), ("NOERROR", []))
            status, records = self.look_up("allowed.example", "TYPE65", server)
            self.assertEqual((status, len(records)), ("NOERROR", 1))

    def test_addresses_stay_as_they_are(self):
        for server in self.for_each_server():
            for kind, address in (("A", "10.9.8.7"), ("AAAA", "fd00::9")):
                status, records = self.look_up("blocked.example", kind, server)
                self.assertEqual((status, len(records)), ("NOERROR", 1))
                self.assertIn(address, records[0])

    def test_a_client_without_extensions_gets_the_same(self):
        self.assertEqual(self.look_up("blocked.example", "TYPE65", SERVER_4, "+noedns"), ("NOERROR", []))
        self.assertEqual(self.look_up(CANARY, "A", SERVER_4, "+noedns"), ("NXDOMAIN", []))

    def test_switched_off_every_answer_is_the_servers(self):
        self.network.save(BLOCKED, enabled=False)
        for server in self.for_each_server():
            self.assertEqual(self.look_up(CANARY, "A", server)[0], "NOERROR")
            self.assertEqual(len(self.look_up("blocked.example", "TYPE65", server)[1]), 1)

    def test_a_changed_list_counts_from_the_next_answer_on(self):
        self.network.save([*BLOCKED, "allowed.example"])
        self.assertEqual(self.look_up("allowed.example", "TYPE65"), ("NOERROR", []))
        self.network.save([])
        self.assertEqual(len(self.look_up("blocked.example", "TYPE65")[1]), 1)

    def test_a_machine_behind_this_one_gets_the_same_answers(self):
        with self.network.machine_behind() as behind:
            for server in (SERVER_4, SERVER_6):
                done = run(*behind, "dig", f"@{server}", CANARY, "A", "+time=20", "+tries=1")
                self.assertIn("status: NXDOMAIN", done)
                done = run(*behind, "dig", f"@{server}", "blocked.example", "TYPE65", "+time=20", "+tries=1", "+short")
                self.assertEqual(done.strip(), "")
                done = run(*behind, "dig", f"@{server}", "allowed.example", "TYPE65", "+time=20", "+tries=1", "+short")
                self.assertNotEqual(done.strip(), "")

    def test_exchanged_answers_are_counted_and_are_no_visit(self):
        before = self.network.call("Statistics")[0]
        self.look_up(CANARY, "A")
        self.look_up("blocked.example", "TYPE65")
        self.look_up("allowed.example", "TYPE65")
        after = self.network.call("Statistics")[0]
        self.assertEqual(after["exchanged"], before["exchanged"] + 2)
        self.assertEqual(after["seen"], before["seen"] + 3)
        self.assertEqual(after["refused"], before["refused"])
        self.assertEqual(after["missed"], 0)

    def test_what_is_asked_over_a_connection_is_the_servers_answer(self):
        # One of the ways round: a name service over TCP.
        self.assertEqual(len(self.look_up("blocked.example", "TYPE65", SERVER_4, "+tcp")[1]), 1)

    def test_killed_every_answer_is_the_servers(self):
        self.network.kill()
        self.assertEqual(self.look_up(CANARY, "A")[0], "NOERROR")
        self.network.start()
        self.assertEqual(self.look_up(CANARY, "A")[0], "NXDOMAIN")


if __name__ == "__main__":
    unittest.main(verbosity=2)
