"""The agent harness as its users have it: the installed script run as an agent runs it, with the shell and curl of the
system, the program that receives, the service, and its database."""
import json
import os
import random
import socket
import sqlite3
import stat
import subprocess
import threading
import time
import unittest
import urllib.request
from concurrent.futures import ThreadPoolExecutor

from support import own_network
from support.programs import BIN, Process, Service, clear_key, scratch, store_key
from support.waiting import happens, until

PORT = 47653
SCRIPT = "Library/Application Support/Orvanta Focus/Hooks/orvanta-session-hook.sh"


class Home:
    """A user's home folder with both agents set up, under a name that needs care."""

    def __init__(self, name="O'Brien \"and\" sons \u00e4"):
        self.path = scratch("home") / name
        self.agents = {"codex": self.path / ".codex" / "hooks.json", "claude": self.path / ".claude" / "settings.json"}
        for configuration in self.agents.values():
            configuration.parent.mkdir(parents=True)
        self.environment = {"HOME": str(self.path)}

    @property
    def script(self):
        return self.path / SCRIPT

    def harness(self, *arguments):
        return subprocess.run(
            [BIN / "orvanta-harness", *arguments], env={**os.environ, **self.environment}, capture_output=True, text=True, stdin=subprocess.DEVNULL
        )

    def install(self):
        done = self.harness("install", "all")
        assert done.returncode == 0, done.stderr

    def command(self, agent, event):
        """What the agent's configuration says it shall run."""
        groups = json.loads(self.agents[agent].read_text())["hooks"][event]
        return groups[-1]["hooks"][0]["command"]

    def fire(self, agent, event, payload):
        """Runs the hook as an agent does. Gives its status, what it printed, and how long it took."""
        begin = time.monotonic()
        done = subprocess.run(["/bin/sh", "-c", self.command(agent, event)], input=payload, capture_output=True)
        return done.returncode, done.stdout + done.stderr, time.monotonic() - begin


def payload(event, session="s1", **fields):
    return json.dumps({"session_id": session, "hook_event_name": event, **fields}).encode()


class HarnessScene(unittest.TestCase):
    def setUp(self):
        self.home = Home()

    def service(self):
        service = Service()
        self.addCleanup(service.stop)
        store_key(service.key)
        return service

    def deliver(self, service, agent, event, event_id, session="s1", **fields):
        """Fires until the event is stored: the script gives up after 0.25 s of its own, in which a busy machine may not even have let
        curl begin."""
        known = f"{agent}:{event}:{session}:{event_id}"

        def arrives():
            status, output, _ = self.home.fire(agent, event, payload(event, session=session, event_id=event_id, **fields))
            self.assertEqual((status, output), (0, b""))
            return happens(lambda: (known,) in self.stored(service), 5)

        until(arrives, lambda: f"{known} is stored; there is {self.stored(service)}")

    def post(self, content):
        """What the script sends for Claude, from one that waits for the answer."""
        request = urllib.request.Request(
            f"http://127.0.0.1:{PORT}/events", content, {"Content-Type": "application/json", "X-Orvanta-Harness": "claude"}, method="POST")
        with urllib.request.urlopen(request, timeout=30) as answer:
            self.assertEqual(answer.status, 202)

    def run_harness(self, origin, home=None, ready=True):
        variables = {"ORVANTA_SERVICE_ORIGIN": origin, **(home or self.home).environment}
        process = Process([BIN / "orvanta-harness", "run"], variables)
        self.addCleanup(process.kill)
        if ready:
            until(lambda: "Listening on 127.0.0.1:47653" in process.output or not process.runs(), lambda: f"it listens\n{process.output}")
            self.assertTrue(process.runs(), process.output)
        return process

    def stored(self, service, columns="event_id"):
        with sqlite3.connect(f"file:{service.data}/orvanta-service.sqlite?mode=ro", uri=True) as database:
            return database.execute(f"SELECT {columns} FROM agent_events ORDER BY id").fetchall()

    def wait_for_stored(self, service, count, process):
        until(lambda: len(self.stored(service)) >= count, lambda: f"{count} events are stored, not {len(self.stored(service))}\n{process.output}")

    def is_settled(self, service):
        """Whether no event has been stored for a second."""
        before = len(self.stored(service))
        return not happens(lambda: len(self.stored(service)) > before, 1)


class Chain(HarnessScene):
    def test_what_agents_do_is_seen_on_the_services_page(self):
        service = self.service()
        self.home.install()
        process = self.run_harness(service.origin)
        transcript = scratch("transcript") / "t.jsonl"
        transcript.write_text(
            json.dumps({"type": "response_item", "payload": {"type": "message", "role": "user", "content": [
                {"type": "input_text", "text": "# AGENTS.md instructions for /w"}]}}) + "\n"
            + json.dumps({"message": {"role": "user", "content": "Make <it> faster"}, "timestamp": "2026-01-31T08:00:00Z"}) + "\n"
        )
        for number, (agent, event) in enumerate((agent, event) for agent in ("codex", "claude") for event in ("SessionStart", "UserPromptSubmit", "Stop")):
            self.deliver(
                service, agent, event, str(number), f"{agent}-session", cwd="/w", transcript_path=str(transcript), prompt="Now \u00e4")
        self.assertEqual(len(self.stored(service)), 6)
        self.assertEqual(
            self.stored(service, "event_id, event_type, session_id, working_folder, prompt")[4],
            ("claude:UserPromptSubmit:claude-session:4", "UserPromptSubmit", "claude-session", "/w", "Now \u00e4"),
        )
        page = urllib.request.urlopen(f"{service.origin}/").read().decode()
        self.assertIn("Agent sessions", page)
        self.assertIn("Make &lt;it&gt; faster", page)
        self.assertIn("Now \u00e4", page)
        self.assertNotIn("AGENTS.md", page)
        self.assertEqual(process.stop(), 0)

    def test_without_a_receiver_an_agent_is_neither_held_up_nor_told(self):
        self.home.install()

        def is_quick():
            status, output, seconds = self.home.fire("claude", "Stop", payload("Stop"))
            self.assertEqual((status, output), (0, b""))
            return seconds < 0.3

        until(is_quick, "a refused port costs an agent less than 0.3 s, unless the machine is busy")

    def test_a_receiver_that_never_answers_holds_an_agent_up_for_a_quarter_of_a_second(self):
        self.home.install()
        with socket.create_server(("127.0.0.1", PORT)):
            status, output, seconds = self.home.fire("codex", "Stop", payload("Stop"))
        self.assertEqual((status, output), (0, b""))
        self.assertGreaterEqual(seconds, 0.2)

    def test_what_comes_while_the_service_is_down_is_uploaded_when_it_is_back(self):
        service = self.service()
        service.stop()
        process = self.run_harness(service.origin)
        for number in range(3):
            self.post(payload("Stop", event_id=str(number)))
        until(lambda: "the next attempt is in" in process.output, lambda: f"the failure is reported\n{process.output}")
        service.start()
        self.wait_for_stored(service, 3, process)
        self.assertEqual([row[0] for row in self.stored(service)], [f"claude:Stop:s1:{number}" for number in range(3)])
        until(lambda: "the service is reached again" in process.output, lambda: f"the success is reported\n{process.output}")

    def test_a_thousand_hooks_sixteen_at_a_time_all_arrive_while_others_misbehave(self):
        service = self.service()
        self.home.install()
        process = self.run_harness(service.origin)
        command = self.home.command("claude", "Stop")
        ends = threading.Event()

        def misbehave(seed):
            choice = random.Random(seed)
            idle = []
            while not ends.is_set():
                try:
                    peer = socket.create_connection(("127.0.0.1", PORT), 5)
                    peer.settimeout(5)
                    peer.send(choice.choice([b"", b"GET / HTTP/1.1\r\n\r\n", b"POST /events HTTP/1.1\r\nContent-Length: 9\r\n", b"\xff" * 60_000]))
                    idle.append(peer)
                except OSError:
                    pass
                if len(idle) > 50:
                    idle.pop(choice.randrange(50)).close()
                ends.wait(0.005)
            for peer in idle:
                peer.close()

        hostile = [threading.Thread(target=misbehave, args=(seed,)) for seed in range(3)]
        for thread in hostile:
            thread.start()

        def fire(number):
            done = subprocess.run(["/bin/sh", "-c", command], input=payload("Stop", event_id=str(number), text="x" * 2000), capture_output=True)
            return done.returncode, done.stdout + done.stderr

        def missing():
            known = {row[0] for row in self.stored(service)}
            return [number for number in range(1000) if f"claude:Stop:s1:{number}" not in known]

        try:
            with ThreadPoolExecutor(16) as pool:
                results = list(pool.map(fire, range(1000)))
                self.assertEqual(set(results), {(0, b"")})
                # The script gives up after 0.25 s of its own, in which a machine that is busy with something else may not even
                # have let curl begin. Such a hook is fired again; the others arrived in time.
                until(lambda: not missing() or self.is_settled(service), "what was received is stored")
                starved = missing()
                print(f"{len(starved)} of 1000 hooks did not arrive within their 0.25 s", flush=True)
                until(lambda: not list(pool.map(fire, missing())), lambda: f"all arrive; missing are {missing()}\n{process.output}", bound=120)
        finally:
            ends.set()
            for thread in hostile:
                thread.join()
        self.assertEqual(len(self.stored(service)), 1000)
        self.assertEqual(process.stop(), 0)

    def test_what_is_no_event_of_a_session_is_not_uploaded(self):
        service = self.service()
        process = self.run_harness(service.origin)
        self.post(b"not JSON")
        self.post(payload("PreToolUse"))
        self.post(payload("Stop", event_id="last"))
        self.wait_for_stored(service, 1, process)
        self.assertEqual(self.stored(service), [("claude:Stop:s1:last",)])

    def test_a_transcript_that_is_a_pipe_holds_nothing_up(self):
        service = self.service()
        process = self.run_harness(service.origin)
        pipe = scratch("transcript") / "pipe"
        os.mkfifo(pipe)
        self.post(payload("Stop", event_id="1", transcript_path=str(pipe)))
        self.wait_for_stored(service, 1, process)


class Program(HarnessScene):
    def test_without_a_key_it_does_not_run(self):
        clear_key()
        process = self.run_harness("http://127.0.0.1:9", ready=False)
        self.assertEqual(process.wait(), 3)
        self.assertIn("Orvanta API key is missing", process.output)

    def test_an_origin_that_the_application_refuses_is_refused(self):
        process = self.run_harness("http://service.example", ready=False)
        self.assertEqual(process.wait(), 2)
        self.assertIn("ORVANTA_SERVICE_ORIGIN", process.output)

    def test_a_second_one_waits_for_the_port(self):
        service = self.service()
        first = self.run_harness(service.origin)
        second = self.run_harness(service.origin, ready=False)
        until(lambda: "port 47653 is in use" in second.output, lambda: f"it says so\n{second.output}")
        self.assertEqual(first.stop(), 0)
        until(lambda: "Listening on" in second.output, lambda: f"it takes over\n{second.output}")
        self.assertEqual(second.stop(), 0)

    def test_it_links_nothing_of_the_window_system(self):
        libraries = subprocess.run(["ldd", BIN / "orvanta-harness"], capture_output=True, text=True, check=True).stdout
        for name in ("Qt6Gui", "Qt6Quick", "libxcb", "libX11"):
            self.assertNotIn(name, libraries)


class Configurations(HarnessScene):
    def test_status_install_and_uninstall_leave_everything_else_alone(self):
        claude = self.home.agents["claude"]
        before = '{ "model" : "x", "n": [1e400, 12345678901234567890, 1.0] ,\n"hooks":{"Stop":[{"hooks":[{"type":"command","command":"true"}]}]}}'
        claude.write_text(before)
        claude.chmod(0o640)
        self.assertEqual(json.loads(self.home.harness("status", "--json").stdout), {"codex": "notInstalled", "claude": "needsRepair"})
        self.home.install()
        self.assertEqual(json.loads(self.home.harness("status", "--json").stdout), {"codex": "installed", "claude": "installed"})
        self.assertEqual(stat.S_IMODE(claude.stat().st_mode), 0o640)
        self.assertEqual(stat.S_IMODE(self.home.script.stat().st_mode), 0o755)
        self.assertEqual(self.home.script.stat().st_size, 299)
        text = claude.read_text()
        self.assertIn("12345678901234567890", text)
        self.assertIn("1e400", text)
        self.assertEqual(json.loads(text)["hooks"]["Stop"][0]["hooks"][0]["command"], "true")
        copies = [path for path in claude.parent.iterdir() if path.name.startswith("settings.json.before-orvanta-")]
        self.assertEqual([path.read_text() for path in copies], [before])
        self.assertEqual(self.home.harness("uninstall", "claude").returncode, 0)
        self.assertEqual(claude.read_text(), before)
        # The other one had none.
        done = self.home.harness("uninstall", "codex")
        self.assertEqual(done.returncode, 0)
        self.assertIn(f"codex: {self.home.agents['codex']} is what it was before", done.stdout)
        self.assertEqual(list(self.home.agents["codex"].parent.iterdir()), [])
        self.assertEqual(json.loads(self.home.harness("status", "--json").stdout), {"codex": "notInstalled", "claude": "needsRepair"})

    def test_a_configuration_with_comments_stays(self):
        claude = self.home.agents["claude"]
        claude.write_text("{\n  // mine\n}\n")
        done = self.home.harness("install", "claude")
        self.assertEqual(done.returncode, 1)
        self.assertIn("settings.json is not valid JSON (line 2); it was left as it is", done.stderr)
        self.assertEqual(claude.read_text(), "{\n  // mine\n}\n")

    def test_hostile_home_folders_in_every_shell(self):
        for name in ("with space", "it's", 'a"b', "line\nbreak", "$(touch x)`id`", "\u4e2d\U0001F451", "-n", "*"):
            home = Home(name)
            home.install()
            for shell in (["/bin/dash"], ["/bin/bash"], ["/bin/busybox", "sh"]):
                with self.subTest(name=name, shell=shell[0]):
                    with socket.create_server(("127.0.0.1", PORT)) as server:
                        server.settimeout(30)
                        command = home.command("claude", "Stop")
                        process = subprocess.Popen([*shell, "-c", command], stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
                        process.stdin.write(b"payload")
                        process.stdin.close()
                        peer, _ = server.accept()
                        with peer:
                            peer.settimeout(30)
                            received = b""
                            while not received.endswith(b"payload"):
                                received += peer.recv(4096)
                            peer.sendall(b"HTTP/1.1 202 Accepted\r\nContent-Length: 0\r\nConnection: close\r\n\r\n")
                        self.assertEqual((process.wait(30), process.stdout.read()), (0, b""))
                        process.stdout.close()
                    self.assertIn(b"X-Orvanta-Harness: claude\r\n", received)


class Doctor(HarnessScene):
    def wait_for_verdict(self, status, text):
        """The doctor runs the hook, which gives up after 0.25 s of its own: on a busy machine it may have to try again."""
        verdicts = []

        def is_given():
            verdicts.append(self.home.harness("doctor"))
            return verdicts[-1].returncode == status and text in verdicts[-1].stdout + verdicts[-1].stderr

        until(is_given, lambda: f"the doctor says {text!r}, not {verdicts[-1]}")
        return verdicts[-1]

    def assert_broken(self, text):
        done = self.wait_for_verdict(1, text)
        self.assertIn(text, done.stderr)
        return done

    def test_it_names_the_first_broken_link(self):
        self.assert_broken("no agent has the hook")
        self.home.install()
        done = self.assert_broken("nobody receives what it sends; orvanta-harness run does")
        self.assertIn("claude: the hook script sends", done.stdout)

        self.home.script.write_text("exit 0")
        self.assert_broken("the hook needs repair")
        self.home.install()

        service = self.service()
        with socket.create_server(("127.0.0.1", PORT)):
            self.assert_broken("port 47653 is taken, but not by an orvanta-harness run of yours that receives")
        process = self.run_harness(service.origin)
        service.stop()
        self.assert_broken("the event cannot be uploaded: ")
        process.stop()

    def test_a_whole_chain_is_whole(self):
        service = self.service()
        self.home.install()
        self.run_harness(service.origin)
        done = self.wait_for_verdict(0, "claude: the service has the event")
        self.assertIn("claude: the service has the event", done.stdout)
        self.assertEqual({row[0] for row in self.stored(service, "session_id")}, {"orvanta-doctor"})


if __name__ == "__main__":
    own_network.enter()
    unittest.main(verbosity=2)
