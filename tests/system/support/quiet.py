"""Whether a program rests. What is measured is held against the clock, so a busy machine makes a program look the quieter."""
import os
import time
from pathlib import Path

from .waiting import until

INTERVAL = 1.5  # seconds
WAKE_UPS = 60  # in a second; a loop that waits for nothing wakes thousands of times
SHARE = 0.15  # of one processor


def _measured(pid):
    """(seconds of processor time, times that a thread gave the processor up to wait), so far."""
    seconds = sum(map(int, Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()[11:13])) / os.sysconf("SC_CLK_TCK")
    waits = 0
    for task in Path(f"/proc/{pid}/task").iterdir():
        try:
            status = (task / "status").read_text()
        except (FileNotFoundError, ProcessLookupError):  # a thread that has ended
            continue
        waits += int(status.partition("\nvoluntary_ctxt_switches:")[2].split()[0])
    return seconds, waits


def wait_until_quiet(pid, share_limit=SHARE, wake_ups=WAKE_UPS):
    """Waits for an interval in which the program does next to nothing, or no more than is said, which one that is busy for good
    never has. Nobody asks it anything meanwhile."""
    seen = []

    def rests():
        begin = time.monotonic()
        seconds, waits = _measured(pid)
        time.sleep(INTERVAL)
        passed = time.monotonic() - begin
        more_seconds, more_waits = _measured(pid)
        share, rate = (more_seconds - seconds) / passed, (more_waits - waits) / passed
        seen.append(f"{share:.0%} of a processor, {rate:.0f} wake-ups a second")
        return share < share_limit and rate < wake_ups

    until(rests, lambda: f"process {pid} rests; it took {seen}")
