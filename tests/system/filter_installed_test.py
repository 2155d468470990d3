"""The website filter as the Debian package installs it: kept by a real systemd, asked over the real system bus, let by a real
polkitd. On a small system of its own (tests/system/with-system), as root."""
import ctypes
import os
import signal
import subprocess
import sys
import time
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))

from gi.repository import GLib

from support import small_system
from support.filtered import NAME, asks, has_rules, run
from support.small_system import SERVICE, InstalledNetwork, Person, dpkg, is_active, journal, main_process, shown, systemctl
from support.waiting import stays, until

BLOCKED = ["blocked.example"]
NET_ADMIN = 1 << 12
AGENT = Path(__file__).resolve().parent / "support" / "polkit_agent.py"

ACTIVATION = f"('{NAME}',)"
RECORD = "({'enabled': <true>, 'grade': <1>},)"
DONE = "()"
APPROVAL_NEEDED = "An administrator has to approve website protection"
NOT_APPROVED = "Website protection was not approved"


def status_of(process):
    lines = Path(f"/proc/{process}/status").read_text().splitlines()
    return {name: value.strip() for name, _, value in (line.partition(":") for line in lines)}


def threads_of(process):
    return [int(name) for name in os.listdir(f"/proc/{process}/task")]


class Installed(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.package = small_system.package()
        small_system.introduce_service()
        dpkg("--install", cls.package)
        cls.network = InstalledNetwork()
        cls.network.__enter__()
        cls.addClassCleanup(cls.network.__exit__, None, None, None)
        # Nobody has started it: the first call does.
        assert cls.network.call("QueryProperties", GLib.Variant("(s)", (NAME,))) == ([False],), journal()
        assert cls.network.activate() == 0
        cls.anna, cls.bert = Person("anna"), Person("bert")
        cls.anna.sit_down()

    def setUp(self):
        if not is_active():
            self.network.start()
        systemctl("reset-failed", SERVICE)  # so that many starts in a row are not taken for a fault
        self.network.save(BLOCKED)

    def blocks(self):
        return not self.network.loads("https://blocked.example/") and self.network.loads("https://allowed.example/")

    def comes_back(self, before):
        """A new process filters in place of the one `before`."""
        until(lambda: is_active() and main_process() not in (0, before), lambda: f"another one runs\n{journal()}", 120)
        until(has_rules, "its rules")
        self.assertTrue(self.blocks())

    # What it may do

    def test_it_is_a_user_of_its_own_with_one_right(self):
        status = status_of(main_process())
        number = run("id", "--user", "orvanta-filter").strip()
        self.assertEqual(status["Uid"].split(), [number] * 4)
        self.assertNotEqual(number, "0")
        for name in ("CapEff", "CapPrm", "CapBnd", "CapAmb", "CapInh"):
            self.assertEqual(int(status[name], 16), NET_ADMIN, name)
        self.assertEqual((status["NoNewPrivs"], status["Seccomp"]), ("1", "2"))
        self.assertTrue(self.blocks())

    def test_it_can_write_nowhere_but_into_its_own_folder(self):
        mounts = [line.split() for line in Path(f"/proc/{main_process()}/mountinfo").read_text().splitlines()]
        writable = {mount[4] for mount in mounts if "rw" in mount[5].split(",")}
        self.assertIn("/var/lib/orvanta-focus", writable)
        self.assertFalse({"/", "/usr", "/etc", "/home", "/root", "/var"} & writable)
        kept = Path("/var/lib/orvanta-focus")
        self.assertEqual([path.name for path in kept.iterdir()], ["state.json"])
        self.assertEqual((kept.stat().st_mode & 0o777, (kept / "state.json").stat().st_mode & 0o777), (0o700, 0o600))

    def test_systemd_finds_its_unit_well_hardened(self):
        exposure = run("systemd-analyze", "security", "--no-pager", "--offline=true", f"/usr/lib/systemd/system/{SERVICE}").strip().splitlines()[-1]
        self.assertLessEqual(float(exposure.split(":")[1].split()[0]), 1.5, exposure)

    def test_its_memory_is_bounded_and_a_million_domains_fit(self):
        limit = int(shown("MemoryMax"))
        self.assertEqual(limit, 512 * 1024 * 1024)
        kept = [Path("/sys/fs/cgroup", place) for place in (f"memory/system.slice/{SERVICE}/memory.limit_in_bytes", f"system.slice/{SERVICE}/memory.max")]
        self.assertEqual([int(path.read_text()) for path in kept if path.exists()], [limit], "the kernel keeps to it")
        self.network.save([f"n{number}.domain.example" for number in range(1_000_000)])
        self.assertFalse(self.network.loads("https://www.n999999.domain.example/"))
        peak = int(status_of(main_process())["VmHWM"].split()[0]) * 1024
        before = main_process()
        systemctl("restart", SERVICE)
        self.assertNotEqual(main_process(), before)
        self.assertFalse(self.network.loads("https://www.n999999.domain.example/"))
        again = int(status_of(main_process())["VmHWM"].split()[0]) * 1024
        print(f"a million domains: at most {peak >> 20} MiB when saved, {again >> 20} MiB when started with them", flush=True)
        self.assertLess(max(peak, again), limit * 0.9)

    def test_the_thread_that_decides_reads_and_writes_no_file(self):
        self.assertTrue(self.blocks())  # so that everything is in memory
        process = main_process()
        others = [thread for thread in threads_of(process) if thread != process]
        self.assertEqual(len(others), 1)

        def figures():
            lines = Path(f"/proc/{process}/task/{others[0]}/io").read_text().splitlines()
            values = dict(line.split(": ") for line in lines)
            return {name: int(values[name]) for name in ("rchar", "wchar", "syscr", "syscw")}  # what calls for reading and writing did
        before, seen = figures(), self.network.call("Statistics")[0]["seen"]
        for _ in range(20):
            self.assertTrue(self.network.loads("https://allowed.example/"))
        after = figures()
        self.assertGreaterEqual(self.network.call("Statistics")[0]["seen"], seen + 20)
        self.assertEqual(after, before)

    # Its life

    def test_killed_it_lets_everything_pass_until_it_is_back(self):
        before = main_process()
        # At first nobody starts it again, so that what is seen is not a race with that.
        override = Path(f"/run/small-system/{SERVICE}.d/wait.conf")
        override.parent.mkdir()
        override.write_text("[Service]\nRestartSec=infinity\n")
        systemctl("daemon-reload")
        os.kill(before, signal.SIGKILL)
        until(lambda: not Path(f"/proc/{before}").exists(), "it is gone")
        self.assertTrue(self.network.loads("https://blocked.example/"))
        until(lambda: not has_rules(), "its rules are gone as well")
        override.unlink()
        override.parent.rmdir()
        systemctl("daemon-reload")
        systemctl("restart", SERVICE)
        self.comes_back(before)
        before = main_process()
        os.kill(before, signal.SIGKILL)
        self.comes_back(before)

    def test_a_daemon_that_hangs_is_ended_by_its_watchdog_and_comes_back(self):
        before = main_process()
        self.assertEqual(shown("WatchdogUSec"), "15s")
        os.kill(before, signal.SIGSTOP)
        until(lambda: all(status_of(thread)["State"].startswith("T") for thread in threads_of(before)), "all of it stands still")
        started = time.monotonic()
        self.assertTrue(self.network.loads("https://allowed.example/"))  # which waits until then, and is told when it may go on
        print(f"a hung daemon held a new connection back for {time.monotonic() - started:.0f} s", flush=True)
        self.comes_back(before)
        self.assertIn("Watchdog timeout", journal())

    def test_a_daemon_whose_thread_hangs_ends_itself_and_comes_back(self):
        before = main_process()
        thread = next(thread for thread in threads_of(before) if thread != before)
        library = ctypes.CDLL(None, use_errno=True)
        seize, interrupt = 0x4206, 0x4207
        self.assertEqual(library.ptrace(seize, thread, None, None), 0, os.strerror(ctypes.get_errno()))
        self.assertEqual(library.ptrace(interrupt, thread, None, None), 0)
        wait_for_threads = 0x40000000
        os.waitpid(thread, wait_for_threads)
        until(lambda: status_of(thread)["State"].startswith(("t", "T")), "the thread is held")
        until(lambda: not Path(f"/proc/{before}/task/{thread}").exists() or status_of(thread)["State"].startswith("Z"), "it ends itself", 120)
        os.waitpid(thread, wait_for_threads)
        self.comes_back(before)

    def test_stopped_it_leaves_no_rule(self):
        self.assertTrue(has_rules())
        self.network.stop()
        self.assertFalse(has_rules())
        self.assertTrue(self.network.loads("https://blocked.example/"))

    def test_started_by_the_bus_again_it_filters_as_before(self):
        self.network.stop()
        self.assertEqual(self.network.call("QueryProperties", GLib.Variant("(s)", (NAME,))), ([True],))
        self.assertTrue(is_active())
        self.assertTrue(has_rules())
        self.assertTrue(self.blocks())

    def test_an_upgrade_takes_over_and_no_allowed_connection_is_lost(self):
        before = main_process()
        with self.network.connect("allowed.example") as kept:
            self.assertTrue(asks(kept))
            dpkg("--install", self.package)
            self.comes_back(before)
            self.assertTrue(asks(kept))

    def test_removed_it_leaves_no_rule_and_purged_nothing_that_was_stored(self):
        self.addCleanup(self.network.activate)
        self.addCleanup(dpkg, "--install", self.package)
        self.assertTrue(has_rules())
        dpkg("--remove", "orvanta-focus")
        self.assertFalse(has_rules())
        self.assertTrue(self.network.loads("https://blocked.example/"))
        self.assertFalse(self.network._has_owner())
        with self.assertRaisesRegex(GLib.Error, "ServiceUnknown"):
            self.network.call("Statistics")
        self.assertTrue(Path("/var/lib/orvanta-focus/state.json").exists())
        dpkg("--purge", "orvanta-focus")
        self.assertFalse(Path("/var/lib/orvanta-focus").exists())

    # Who may ask what

    @staticmethod
    def rules(text):
        return small_system.rules_of_polkit(text)

    def forget_activation(self):
        """As before anybody has approved."""
        self.network.stop()
        Path("/var/lib/orvanta-focus/state.json").unlink()
        self.addCleanup(self.network.activate)
        self.network.start()

    def state(self):
        return self.network.call("LoadPreferences"), self.network.call("QueryProperties", GLib.Variant("(s)", (NAME,)))

    def agent(self, consent):
        agent = subprocess.Popen(self.anna.within_session(sys.executable, str(AGENT), self.anna.session, consent), stdout=subprocess.PIPE, text=True)
        self.addCleanup(agent.stdout.close)
        self.addCleanup(agent.wait)
        self.addCleanup(agent.kill)
        self.assertEqual(agent.stdout.readline(), "ready\n")
        return agent

    def test_whoever_sits_at_the_screen_configures_without_being_asked(self):
        self.assertEqual(self.anna.calls("SavePreferences", RECORD), DONE)
        self.assertEqual(self.network.call("LoadPreferences")[0]["enabled"], True)
        self.assertNotIn("providerConfiguration", self.network.call("LoadPreferences")[0])
        self.assertEqual(self.anna.calls("RemoveDnsProxy"), DONE)

    def test_activation_needs_an_administrators_approval(self):
        self.forget_activation()
        before = self.state()
        self.assertEqual(before[1], ([False],))
        self.assertIn(APPROVAL_NEEDED, self.anna.calls("Activate", ACTIVATION))
        # Allowed to ask, but nobody is there who could be asked.
        self.assertIn(NOT_APPROVED, self.anna.calls("Activate", ACTIVATION, may_ask=True))
        self.assertEqual(self.state(), before)

    def test_approved_by_an_administrator_it_is_active(self):
        self.forget_activation()
        agent = self.agent("yes")
        self.assertEqual(self.anna.calls("Activate", ACTIVATION, may_ask=True), "(0,)")
        self.assertEqual(agent.stdout.readline().split(" ", 1),
                         ["com.orvanta.focus.filter.activate", "Authentication is required to let Orvanta Focus block websites on this computer\n"])
        self.assertEqual(self.state()[1], ([True],))

    def test_refused_by_the_administrator_nothing_changes(self):
        self.forget_activation()
        before = self.state()
        agent = self.agent("no")
        self.assertIn(NOT_APPROVED, self.anna.calls("Activate", ACTIVATION, may_ask=True))
        self.assertTrue(agent.stdout.readline())
        self.assertEqual(self.state(), before)

    def test_an_approval_is_for_the_one_who_asked_and_for_once(self):
        self.forget_activation()
        self.agent("yes")
        self.assertEqual(self.anna.calls("Activate", ACTIVATION, may_ask=True), "(0,)")
        self.assertIn(NOT_APPROVED, self.bert.calls("Activate", ACTIVATION, may_ask=True))
        self.assertIn(APPROVAL_NEEDED, self.anna.calls("Activate", ACTIVATION))

    def test_nobody_else_may_do_anything(self):
        before = self.state()
        for method, arguments in (("Activate", ACTIVATION), ("SavePreferences", RECORD), ("RemoveDnsProxy", "()")):
            for may_ask in (False, True):
                with self.subTest(method=method, may_ask=may_ask):
                    self.assertIn(NOT_APPROVED, self.bert.calls(method, arguments, may_ask=may_ask))
        self.assertEqual(self.state(), before)

    def test_what_this_computers_administrator_decided_counts(self):
        rule = 'polkit.addRule(function(action, subject) {{ if (subject.user == "{}" && action.id.indexOf("com.orvanta.focus.filter.") == 0) return "{}"; }});'
        before = self.state()
        with self.rules(rule.format("bert", "yes")):
            until(lambda: self.bert.calls("Activate", ACTIVATION) == "(0,)", "bert is allowed to")
            self.assertEqual(self.bert.calls("SavePreferences", RECORD), DONE)
        until(lambda: NOT_APPROVED in self.bert.calls("SavePreferences", RECORD), "bert is not any more")
        self.network.save(BLOCKED)
        self.assertEqual(self.state(), before)
        with self.rules(rule.format("anna", "no")):
            until(lambda: NOT_APPROVED in self.anna.calls("SavePreferences", RECORD), "anna is not allowed to")
        until(lambda: self.anna.calls("SavePreferences", RECORD) == DONE, "anna is again")

    def test_only_root_is_told_what_the_list_says_of_an_address(self):
        explain = ["/usr/libexec/orvanta-filterd", "--explain", "https://www.blocked.example/"]
        self.assertIn("www.blocked.example is blocked by the entry blocked.example,", run(*explain))
        for person in (self.anna, self.bert):
            done = subprocess.run(person.command(*explain), capture_output=True, text=True)
            self.assertEqual((done.returncode, done.stdout), (1, ""))
            self.assertEqual(done.stderr, "orvanta-filterd: /var/lib/orvanta-focus/state.json cannot be read: Permission denied\n")

    def test_records_that_make_no_sense_change_nothing(self):
        before = self.state()
        for record in ("{'grade': <'one'>}", "{'surprise': <true>}", "{'grade': <3>}", "{'enabled': <1>}", f"{{'localizedDescription': <'{'x' * 5000}'>}}",
                       "{'providerConfiguration': <'x'>}", "{'providerConfiguration': <{'filterPackets': <true>}>}",
                       "{'providerConfiguration': <{'vendorConfiguration': <{'blockedDomains': <'x'>}>}>}",
                       "{'providerConfiguration': <{'vendorConfiguration': <{'allowed': <['x']>}>}>}"):
            with self.subTest(record=record[:60]):
                self.assertIn("The preferences cannot be read", self.anna.calls("SavePreferences", f"({record},)"))
        for arguments in ("('x',)", "(['x'],)", "()"):
            self.assertIn("InvalidArgs", self.anna.calls("SavePreferences", arguments))
        self.assertIn("There is no extension of that name", self.anna.calls("Activate", "('com.example.Other',)"))
        self.assertEqual(self.state(), before)
        self.assertTrue(self.blocks())

    def test_a_record_that_is_too_large_changes_nothing(self):
        before, process = self.state(), main_process()
        with self.assertRaises(GLib.Error):  # more than the system bus carries
            self.network.save(["x" * 4096 for _ in range(10_000)])
        self.network._connect(self.network.BUS_ADDRESS)
        with self.assertRaisesRegex(GLib.Error, "cannot be read"):
            self.network.save(["x" * 4097])
        self.assertEqual(self.state(), before)
        self.assertEqual(main_process(), process)

    def test_without_polkit_nobody_but_root_may_change_anything(self):
        before = self.state()
        unit = Path("/run/small-system/polkit.service")
        its_file = unit.readlink()

        def is_now(target):
            unit.unlink()
            unit.symlink_to(target)
            systemctl("daemon-reload")
        systemctl("stop", "polkit.service")
        is_now("/dev/null")
        try:
            self.assertIn("cannot be found out", self.anna.calls("SavePreferences", RECORD))
            self.assertEqual(self.state(), before)
            self.network.save(BLOCKED)
        finally:
            is_now(its_file)
            systemctl("start", "polkit.service")

    def test_many_callers_at_once_are_all_answered(self):
        calls = [person.start_call("SavePreferences", RECORD) for _ in range(10) for person in (self.anna, self.bert)]
        outcomes = [call.communicate(timeout=300)[0].strip() for call in calls]
        self.assertEqual([outcome == DONE for outcome in outcomes], [True, False] * 10)
        stays(is_active, "the daemon runs on", 0.5)


if __name__ == "__main__":
    unittest.main(verbosity=2)
