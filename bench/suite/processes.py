"""What running programs cost, read from /proc: the whole tree beneath a process, never the process alone."""
import os
import time
from pathlib import Path

CLOCK_TICKS = os.sysconf("SC_CLK_TCK")


def _stat(pid):
    """The fields of /proc/PID/stat after the name, which may hold blanks itself; None if the process is gone."""
    try:
        return Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()
    except OSError:
        return None


def tree(root):
    """The process ids of `root` and of everything beneath it."""
    children = {}
    for entry in os.listdir("/proc"):
        if entry.isdigit() and (fields := _stat(entry)):
            children.setdefault(int(fields[1]), []).append(int(entry))
    found, ahead = [], [root]
    while ahead:
        pid = ahead.pop()
        found.append(pid)
        ahead += children.get(pid, [])
    return found


def pss(root):
    """The proportional set size of the tree, in MiB."""
    total = 0
    for pid in tree(root):
        try:
            lines = Path(f"/proc/{pid}/smaps_rollup").read_text().splitlines()
        except OSError:
            continue
        total += sum(int(line.split()[1]) for line in lines if line.startswith("Pss:"))
    return total / 1024


def _own_cpu(pid):
    """CPU seconds of all threads that the process has or had: its CPU clock, which counts nanoseconds."""
    try:
        return time.clock_gettime((~pid << 3) | 2)
    except OSError:
        return 0.0


def cpu(root):
    """CPU seconds of the tree so far, with the children that have ended (those in hundredths of a second)."""
    total = 0.0
    for pid in tree(root):
        if fields := _stat(pid):
            total += _own_cpu(pid) + (int(fields[13]) + int(fields[14])) / CLOCK_TICKS
    return total


def _switches(root):
    """How often each thread of the tree has gone to sleep of its own accord so far."""
    counts = {}
    for pid in tree(root):
        try:
            threads = os.listdir(f"/proc/{pid}/task")
        except OSError:
            continue
        for thread in threads:
            try:
                status = Path(f"/proc/{pid}/task/{thread}/status").read_text()
            except OSError:
                continue
            for line in status.splitlines():
                if line.startswith("voluntary_ctxt_switches:"):
                    counts[int(thread)] = int(line.split()[1])
    return counts


class Watch:
    """CPU time and wake-ups of a tree over a stretch of real time. Threads that end lose what they did since the last
    look, of which there are two a second."""

    LOOKS_A_SECOND = 2

    def __init__(self, root):
        self.root = root

    def over(self, seconds):
        """(CPU seconds a minute, wake-ups a second)"""
        seen = _switches(self.root)
        begin_cpu, begin = cpu(self.root), time.monotonic()
        wakeups = 0
        while (left := begin + seconds - time.monotonic()) > 0:
            time.sleep(min(left, 1 / self.LOOKS_A_SECOND))
            now = _switches(self.root)
            wakeups += sum(count - seen.get(thread, 0) for thread, count in now.items())
            seen = now
        elapsed = time.monotonic() - begin
        return (cpu(self.root) - begin_cpu) * 60 / elapsed, wakeups / elapsed


def put_first(pid):
    """What only looks at a clock gets the processor before what it measures, where we may say so."""
    try:
        os.setpriority(os.PRIO_PROCESS, pid, -15)
    except PermissionError:
        pass


def load():
    """How many tasks ran or wanted to, on average over the last minute."""
    return os.getloadavg()[0]
