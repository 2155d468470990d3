"""The program's own adapters on the real daemon, bus and polkit: runs a test program of the platform's on the small system
(tests/system/with-system), as a person who sits at the screen. Usage: filter_adapters_test.py PROGRAM"""
import os
import subprocess
import sys
import tempfile
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))

from support import small_system
from support.filter_hands import Hands
from support.filtered import run
from support.small_system import BUILD, InstalledNetwork, Person

AGENT = Path(__file__).resolve().parent / "support" / "polkit_agent.py"


def main(program, *arguments):
    run("cmake", "--install", BUILD, "--prefix", "/usr")
    run("systemd-sysusers", "orvanta-filterd.conf")
    small_system.introduce_service()
    small_system.systemctl("daemon-reload")
    small_system.systemctl("reload", "dbus.service")
    with InstalledNetwork() as network, tempfile.TemporaryDirectory(prefix="orvanta-adapters-") as folder:
        anna = Person("anna")
        anna.sit_down()
        os.chown(folder, anna.number, anna.number)
        hands = Hands(network, folder, anna)
        agent = subprocess.Popen(anna.within_session(sys.executable, str(AGENT), anna.session, "yes"), stdout=subprocess.PIPE, text=True)
        assert agent.stdout.readline() == "ready\n"
        environment = {**os.environ, "ORVANTA_HANDS": str(hands.path), "HOME": folder, "QT_QPA_PLATFORM": "offscreen", "XDG_RUNTIME_DIR": folder}
        # The program waits with its first question until it is known here.
        test = subprocess.Popen(anna.command(program, *arguments), env=environment)
        hands.process = test.pid
        try:
            return test.wait(500)
        finally:
            test.kill()
            test.wait()
            agent.kill()
            agent.wait()
            agent.stdout.close()
            hands.close()


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
