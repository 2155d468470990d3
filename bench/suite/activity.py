"""What one sample of the user's activity costs: the processes against ps, the windows against wmctrl and xdotool."""
import os
import subprocess
import sys
import time

from . import scene
from .table import Row

AIM_PROCESSES = 0.25  # x ps
AIM_WINDOWS = 0.1  # x wmctrl
AIM_ROUND_TRIPS = 2

PS = ["/bin/ps", "-axo", "pcpu=,command="]


def _cpu_of(command, rounds):
    """Median CPU time of one run of a program, in µs, with what the kernel does for it."""
    found = []
    for _ in range(rounds):
        before = os.times()
        subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)
        after = os.times()
        found.append((after.children_user + after.children_system - before.children_user - before.children_system) * 1e6)
    # Children's times come in hundredths of a second: their mean says more than their median.
    return sum(found) / len(found)


def _sleepers(count):
    """So many more processes, each with a command line of its own."""
    script = "import os, sys, time\nfor i in range(int(sys.argv[1])):\n    if os.fork() == 0:\n        time.sleep(3600)\n        os._exit(0)\ntime.sleep(3600)"
    return subprocess.Popen([sys.executable, "-c", script, str(count)], start_new_session=True)


def _processes(rounds):
    rows = []
    for wanted in (200, 1500):
        running = len([entry for entry in os.listdir("/proc") if entry.isdigit()])
        sleepers = _sleepers(max(0, wanted - running))
        try:
            scene.until(lambda: len([entry for entry in os.listdir("/proc") if entry.isdigit()]) >= wanted, "the processes are there")
            ours = scene.run("activity_bench", "processes", rounds)[0]["cpu_us"]
            theirs = _cpu_of(PS, rounds)
        finally:
            os.killpg(sleepers.pid, 9)
            sleepers.wait()
        rows.append(Row(
            f"looking for an agent among {wanted:,} processes, CPU (ps)", f"{ours / 1000:.2f} ms", f"{theirs / 1000:.2f} ms", "-", f"{ours / theirs:.3f}",
            f"<= {AIM_PROCESSES} x ps", ours <= AIM_PROCESSES * theirs))
    return rows


def _windows(rounds):
    terminals = [subprocess.Popen(["xterm", "-e", "tail", "-f", "/dev/null"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) for _ in range(30)]
    try:
        scene.until(lambda: len(scene.tool("wmctrl", "-l").splitlines()) >= 30, "thirty windows are there")
        time.sleep(1)  # for the window manager to finish with them
        ours = scene.run("activity_bench", "windows", rounds)[0]
        wmctrl = _cpu_of(["wmctrl", "-lpx"], rounds)
        xdotool = _cpu_of(["xdotool", "getactivewindow", "getwindowname", "getwindowpid"], rounds)
        sample = scene.run("activity_bench", "sample", rounds)[0]
    finally:
        for terminal in terminals:
            terminal.kill()
            terminal.wait()
    return [
        Row("front and running applications among 30 windows, CPU (wmctrl, xdotool)", f"{ours['cpu_us'] / 1000:.3f} ms",
            f"{wmctrl / 1000:.2f} ms, {xdotool / 1000:.2f} ms", "-", f"{ours['cpu_us'] / wmctrl:.3f}, {ours['cpu_us'] / xdotool:.3f}",
            f"<= {AIM_WINDOWS} x wmctrl", ours["cpu_us"] <= AIM_WINDOWS * wmctrl),
        Row("the same, round trips", f"{ours['round_trips']:.1f}", aim=f"<= {AIM_ROUND_TRIPS}", reached=ours["round_trips"] <= AIM_ROUND_TRIPS),
        Row("one whole sample, 30 windows, CPU", f"{sample['cpu_us'] / 1000:.2f} ms"),
    ]


def measure(options):
    rounds = options.count or 50
    return _processes(rounds) + _windows(rounds)
