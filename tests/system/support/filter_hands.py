"""What the tests of the program's own adapters need done on the small system by somebody with more rights than they have:
said in lines over a socket, each answered with "done". See tests/system/filter_adapters_test.py."""
import json
import socketserver
import subprocess
import threading
from pathlib import Path

from .small_system import SERVICE, systemctl
from .waiting import until

STATE = Path("/var/lib/orvanta-focus/state.json")
RULE = Path("/etc/polkit-1/rules.d/10-scene.rules")
ACTIVATE, CONFIGURE = "com.orvanta.focus.filter.activate", "com.orvanta.focus.filter.configure"
YES, NO, ASKS = 0, 1, 2  # how pkcheck ends


class Hands:
    def __init__(self, network, folder, person):
        self.network, self.person = network, person
        self.process = None  # whose rights are in question
        path = Path(folder, "hands")
        hands = self

        class Handler(socketserver.StreamRequestHandler):
            def handle(self):
                for line in self.rfile:
                    word, *arguments = line.decode().strip().split(" ")
                    try:
                        getattr(hands, word)(*arguments)
                        answer = "done"
                    except Exception as error:  # told to the test, which fails with it
                        answer = f"failed: {error!r}"
                    self.wfile.write(f"{answer}\n".encode())

        class Server(socketserver.ThreadingMixIn, socketserver.UnixStreamServer):
            daemon_threads = True
        self.server = Server(str(path), Handler)
        path.chmod(0o777)
        self.path = path
        threading.Thread(target=self.server.serve_forever, daemon=True).start()

    def close(self):
        self.server.shutdown()
        self.server.server_close()
        RULE.unlink(missing_ok=True)

    # What can be asked for

    def fresh(self, provider=""):
        """The filter as nobody has used it yet; or with what an earlier version left there."""
        systemctl("stop", SERVICE)
        STATE.unlink(missing_ok=True)
        if provider:
            STATE.write_text(json.dumps({"activated": False, "preferences": {}, "dnsProxyProvider": provider}))
            subprocess.run(["chown", "orvanta-filter:", STATE], check=True)
        systemctl("start", SERVICE)
        systemctl("reset-failed", SERVICE)  # so that many starts in a row are not taken for a fault

    def approval(self, how):
        """What happens to whoever wants to activate: granted, asked, denied."""
        self._decide({"granted": "yes", "asked": None, "denied": "no"}[how], ACTIVATE, {"granted": YES, "asked": ASKS, "denied": NO}[how])

    def saving(self, how):
        self._decide({"permitted": None, "denied": "no"}[how], CONFIGURE, {"permitted": YES, "denied": NO}[how])

    def refuse(self):
        """A browser meets a blocked site, once its last visit is told."""
        self.network.call("Statistics")  # it runs
        self.network.activate()
        self.network.save(["blocked.example"])
        assert not self.network.loads("https://blocked.example/")

    def others(self):
        """Somebody else sends what only the filter may."""
        subprocess.run(["busctl", "--system", "emit", "/com/orvanta/focus/OrvantaFocusDNSProxy", "com.orvanta.focus.Filter1", "Notification", "s",
                        "com.orvanta.focus.blocked-domain-attempt"], check=True)

    def _decide(self, result, action, outcome):
        RULE.unlink(missing_ok=True)
        if result:
            RULE.write_text(f'polkit.addRule(function(action, subject) {{ if (action.id == "{action}" && subject.user == "{self.person.name}") '
                            f'return "{result}"; }});\n')
            RULE.chmod(0o644)
        check = ["pkcheck", "--action-id", action, "--process", str(self.process)]
        until(lambda: subprocess.run(check, capture_output=True).returncode == outcome, f"polkit says {result} to {action}")
