"""What may happen to the website filter while it runs, and to the traffic that goes through its machine. Needs root, and a
network namespace of its own (tests/system/CMakeLists.txt)."""
import contextlib
import os
import signal
import socket
import struct
import subprocess
import sys
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))

from gi.repository import GLib

from support.filtered import NAME, SERVER_4, SERVER_6, Network, asks, has_rules, run, tables
from support.waiting import until

BLOCKED = ["blocked.example"]
QUEUE = 47653
# Of QUIC's form, and sealed with nobody's key.
QUIC_INITIAL = bytes.fromhex("c0" "00000001" "08" "1122334455667788" "00" "00" "4496") + bytes(1174)
PROGRAM = Path(os.environ["ORVANTA_BIN"], "orvanta-filterd")


class OtherListener:
    """Somebody else at our queue, who got there first."""

    def __enter__(self):
        nfnetlink, bind, ours = 12, 1, 3 << 8 | 2
        self.socket = socket.socket(socket.AF_NETLINK, socket.SOCK_RAW, nfnetlink)
        self.socket.bind((0, 0))
        command = struct.pack("=HH", 8, 1) + struct.pack(">BxH", bind, socket.AF_UNSPEC)
        body = struct.pack(">BBH", socket.AF_UNSPEC, 0, QUEUE) + command
        request, acknowledge = 1, 4
        self.socket.send(struct.pack("=IHHII", 16 + len(body), ours, request | acknowledge, 1, 0) + body)
        assert struct.unpack_from("=i", self.socket.recv(4096), 16)[0] == 0
        return self

    def __exit__(self, *_):
        self.socket.close()


class Life(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.network = Network()
        cls.network.__enter__()
        cls.addClassCleanup(cls.network.__exit__)
        cls.network.start()
        assert cls.network.activate() == 0

    def setUp(self):
        if self.network.daemon is None:
            self.network.start()
        self.network.save(BLOCKED)

    def figures(self):
        return self.network.call("Statistics")[0]

    def blocks(self):
        return not self.network.loads("https://blocked.example/") and self.network.loads("https://allowed.example/")

    # Traffic of others that goes through this machine

    def test_a_machine_behind_this_one_is_filtered_as_well(self):
        with self.network.machine_behind() as behind:
            def loads(url, address):
                host = url.split("/")[2]
                return run_quietly(*behind, "curl", "--silent", "--insecure", "--noproxy", "*", "--max-time", "60", "--resolve",
                                   f"{host}:{443 if url.startswith('https') else 80}:{address}", url) == (0, "welcome")
            for address in (SERVER_4, f"[{SERVER_6}]"):
                for scheme in ("http", "https"):
                    with self.subTest(address=address, scheme=scheme):
                        self.assertFalse(loads(f"{scheme}://blocked.example/", address))
                        self.assertTrue(loads(f"{scheme}://allowed.example/", address))
            self.network.save(BLOCKED, enabled=False)
            self.assertTrue(loads("https://blocked.example/", SERVER_4))

    # The rules

    def test_rules_that_somebody_else_takes_away_are_put_back(self):
        for command in (("flush", "ruleset"), ("delete", "table", "inet", "orvanta_focus"), ("flush", "chain", "inet", "orvanta_focus", "decide")):
            with self.subTest(command=command):
                run("nft", *command)
                until(lambda: has_rules() and not self.network.loads("https://blocked.example/"), "the filter works again")
                self.assertTrue(self.blocks())
        self.assertEqual(self.figures()["active"], 1)

    def claimed(self):
        return self.network.call("QueryProperties", GLib.Variant("(s)", (NAME,)))[0], self.figures()["active"]

    @contextlib.contextmanager
    def rules_in_other_hands(self):
        """Its rules are gone and cannot be put back: a table of that name belongs to a process, and nobody else may touch it."""
        other = subprocess.Popen(["nft", "--interactive"], stdin=subprocess.PIPE, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, text=True)
        try:
            other.stdin.write("delete table inet orvanta_focus\nadd table inet orvanta_focus { flags owner; }\n")
            other.stdin.flush()
            until(lambda: self.claimed() == ([False], 0), "it says that it does not filter")
            yield
        finally:
            other.stdin.close()
            other.wait(30)
        until(lambda: self.claimed() == ([True], 1), "it filters again")

    def test_while_its_rules_cannot_be_put_back_it_claims_nothing(self):
        self.assertEqual(self.claimed(), ([True], 1))
        with self.rules_in_other_hands():
            self.assertTrue(self.network.loads("https://blocked.example/"))
        self.assertTrue(self.blocks())

    def test_a_list_that_changes_before_the_rules_are_put_back_holds_at_once(self):
        for _ in range(5):
            for list_, others in ((["allowed.example"], "blocked.example"), (BLOCKED, "allowed.example")):
                run("nft", "flush", "ruleset")
                self.network.save(list_)
                self.assertTrue(has_rules())
                self.assertFalse(self.network.loads(f"https://{list_[0]}/"))
                self.assertTrue(self.network.loads(f"https://{others}/"))

    def test_a_list_that_cannot_be_brought_into_force_leaves_the_old_one_there(self):
        before = self.network.call("LoadPreferences")
        with self.rules_in_other_hands():
            with self.assertRaisesRegex(GLib.Error, "nftables"):
                self.network.save(["allowed.example"])
            self.assertEqual(self.network.call("LoadPreferences"), before)
        self.assertTrue(self.blocks())

    def test_rules_that_were_rightly_taken_away_stay_away(self):
        self.network.save(BLOCKED, enabled=False)
        # Somebody else's change is what makes the daemon look.
        run("nft", "add", "table", "inet", "somebody_elses")
        run("nft", "delete", "table", "inet", "somebody_elses")
        self.network.save(BLOCKED)
        self.network.save(BLOCKED, enabled=False)
        self.assertFalse(has_rules())
        self.assertTrue(self.network.loads("https://blocked.example/"))

    def test_a_kernel_that_knows_no_queue_of_nftables_gets_the_older_target(self):
        native = subprocess.run(["nft", "add table inet probe; add chain inet probe c; add rule inet probe c queue num 1 bypass; delete table inet probe"],
                                capture_output=True, text=True).returncode == 0
        listing = subprocess.run(["nft", "--debug=netlink", "list", "chain", "inet", "orvanta_focus", "decide"], capture_output=True, text=True, check=True)
        listed = listing.stdout + listing.stderr
        print(f"this kernel {'has' if native else 'has not'} nftables' own queue", flush=True)
        self.assertIn("queue num" if native else "target name NFQUEUE rev 3", listed)
        self.assertTrue(self.blocks())

    # What cannot be done

    def test_when_the_queue_is_taken_it_says_so_and_claims_nothing(self):
        self.network.save(BLOCKED, enabled=False)
        before = self.network.call("LoadPreferences")
        with OtherListener():
            with self.assertRaisesRegex(GLib.Error, "queue is taken"):
                self.network.save(BLOCKED)
            self.assertEqual(self.network.call("LoadPreferences"), before)
            self.assertEqual(self.figures()["active"], 0)
            self.assertFalse(has_rules())
            self.assertTrue(self.network.loads("https://blocked.example/"))
        self.network.save(BLOCKED)
        self.assertTrue(self.blocks())

    def test_started_while_the_queue_is_taken_it_ends_and_blocks_nothing(self):
        self.network.kill()
        with OtherListener():
            done = subprocess.run([PROGRAM], env={**os.environ, "STATE_DIRECTORY": str(self.network.state)}, capture_output=True, text=True)
            self.assertEqual(done.returncode, 1)
            self.assertIn("queue is taken", done.stderr)
            self.assertFalse(has_rules())
            self.assertTrue(self.network.loads("https://blocked.example/"))
        self.network.start()
        self.assertTrue(self.blocks())

    def test_a_state_that_cannot_be_stored_is_refused_and_the_old_one_holds(self):
        before = self.network.call("LoadPreferences")
        (self.network.state / "state.json.next").mkdir()
        self.addCleanup(lambda: (self.network.state / "state.json.next").exists() and (self.network.state / "state.json.next").rmdir())
        with self.assertRaisesRegex(GLib.Error, "cannot be stored"):
            self.network.save(["allowed.example"])
        self.assertEqual(self.network.call("LoadPreferences"), before)
        self.assertTrue(self.blocks())

    def test_a_damaged_state_is_set_aside_and_blocks_nothing(self):
        self.network.stop()
        state = self.network.state / "state.json"
        kept = state.read_bytes()
        state.write_bytes(kept[:len(kept) // 2])
        self.network.start()
        self.assertFalse(has_rules())
        self.assertEqual(self.network.call("LoadPreferences")[0]["enabled"], False)
        self.assertTrue((self.network.state / "state.json.damaged").exists())
        self.assertEqual(self.network.activate(), 0)

    def test_a_state_that_cannot_be_read_ends_it_and_is_not_lost(self):
        self.network.stop()
        state = self.network.state / "state.json"
        kept = self.network.state / "kept"
        state.rename(kept)
        state.symlink_to("state.json")
        for arguments in ([], ["--explain", "https://blocked.example/"]):
            done = subprocess.run([PROGRAM, *arguments], env={**os.environ, "STATE_DIRECTORY": str(self.network.state)}, capture_output=True, text=True,
                                  timeout=60)
            self.assertEqual((done.returncode, done.stdout), (1, ""))
            self.assertEqual(done.stderr, f"orvanta-filterd: {state} cannot be read: Too many levels of symbolic links\n")
        self.assertTrue(state.is_symlink())
        kept.rename(state)
        self.network.start()
        self.assertTrue(self.blocks())

    # One process after another

    def test_connections_that_were_allowed_outlive_the_daemon_and_others_end_with_their_next_request(self):
        for how in (signal.SIGTERM, signal.SIGKILL):
            with self.subTest(how=how), self.network.connect("allowed.example") as allowed:
                self.assertTrue(asks(allowed))
                self.network.stop(how)
                with self.network.connect("blocked.example") as meanwhile:
                    self.assertTrue(asks(meanwhile))
                    self.network.start()
                    self.assertFalse(asks(meanwhile))
                    self.assertTrue(asks(allowed))

    def test_two_at_once_the_second_one_ends_and_the_first_one_filters_on(self):
        done = subprocess.run([PROGRAM], env={**os.environ, "STATE_DIRECTORY": str(self.network.state)}, capture_output=True, text=True)
        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stderr, "orvanta-filterd: another one runs already\n")
        self.assertTrue(has_rules())
        self.assertTrue(self.blocks())

    def test_its_rules_can_be_taken_away_by_hand(self):
        self.network.kill()
        self.assertTrue(has_rules())
        run("nft", "add", "table", "inet", "somebody_elses")
        self.addCleanup(run, "nft", "delete", "table", "inet", "somebody_elses")
        for _ in range(2):
            run(PROGRAM, "--remove-rules")
            self.assertFalse(has_rules())
        self.assertIn("table inet somebody_elses", tables())

    # Figures

    def test_packets_that_name_nobody_pass_and_are_counted(self):
        before = self.figures()
        with self.network.connect(port=80) as connection:
            connection.sendall(b"GET / HTTP/1.0\r\n\r\n")
            until(lambda: self.figures()["undecided"] > before["undecided"], "an undecided connection")
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as client:
            client.sendto(QUIC_INITIAL, (SERVER_4, 443))
            until(lambda: self.figures()["undecided"] > before["undecided"] + 1, "an undecided datagram")
        self.assertEqual(self.figures()["refused"], before["refused"])
        until(lambda: self.figures()["missed"] == 0, "nothing was missed")

    def test_packets_that_went_past_are_counted(self):
        # More of them while it stands still than the kernel keeps for it. Those that it does not keep, it lets pass.
        before = self.figures()["seen"]
        self.network.daemon.send_signal(signal.SIGSTOP)
        try:
            until(lambda: self._state() == "T", "it stands still")
            # Each from a socket of few packets: what is held back counts against the room of the one that sent it.
            sent, each = 3000, 20
            for _ in range(sent // each):
                with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as client:
                    for _ in range(each):
                        client.sendto(QUIC_INITIAL, (SERVER_4, 443))
        finally:
            self.network.daemon.send_signal(signal.SIGCONT)
        figures = until(lambda: (now := self.figures())["seen"] + now["missed"] >= before + sent and now == self.figures() and now,
                        "all of what was kept is answered")
        print(f"of {sent} packets {figures['missed']} went past a daemon that stood still", flush=True)
        self.assertGreater(figures["missed"], 0)
        self.assertLess(figures["missed"], sent)
        self.assertTrue(self.blocks())

    def _state(self):
        return Path(f"/proc/{self.network.daemon.pid}/stat").read_text().rsplit(")", 1)[1].split()[0]

    # Words

    def test_it_says_which_entry_blocks_an_address_and_why(self):
        self.network.save(["www.example.com", "Bücher.Example", "*.news.example.", "com"])

        def explained(address):
            done = subprocess.run([PROGRAM, "--explain", address], capture_output=True, text=True, check=True,
                                  env={**os.environ, "STATE_DIRECTORY": str(self.network.state)})
            return done.stdout.strip()
        for address, words in (
                ("https://user@WWW.Example.COM:8443/page?q=1#x", "www.example.com is blocked by the entry www.example.com, which covers www.example.com and all below it"),
                ("a.b.www.example.com", "a.b.www.example.com is blocked by the entry www.example.com, which covers www.example.com and all below it"),
                ("http://bücher.example/", "xn--bcher-kva.example is blocked by the entry Bücher.Example, which covers xn--bcher-kva.example and all below it"),
                ("news.example", "news.example is blocked by the entry *.news.example., which covers news.example and all below it"),
                ("https://example.com/", "example.com is not blocked: none of 4 entries covers it"),
                ("https://notwww.example.com/", "notwww.example.com is not blocked: none of 4 entries covers it"),
                ("not an address", "not an address names no host, so nothing blocks it"),
                ("", "names no host, so nothing blocks it")):
            with self.subTest(address=address):
                self.assertEqual(explained(address), words)
        self.network.save(["www.example.com"], enabled=False)
        self.assertEqual(explained("www.example.com"),
                         "www.example.com is blocked by the entry www.example.com, which covers www.example.com and all below it; but the filter is off")

    def test_arguments_that_it_does_not_know_are_refused(self):
        for arguments in (["--explain"], ["--nonsense"], ["--explain", "a", "b"]):
            done = subprocess.run([PROGRAM, *arguments], capture_output=True, text=True)
            self.assertEqual((done.returncode, done.stderr), (2, "orvanta-filterd: takes --explain ADDRESS, --remove-rules, or nothing\n"))


def run_quietly(*command):
    done = subprocess.run(command, capture_output=True, text=True)
    return done.returncode, done.stdout


if __name__ == "__main__":
    unittest.main(verbosity=2)
