"""Waiting on conditions, generously bounded."""
import time

BOUND = 30.0  # seconds; on a machine that is busy with a build as well


def until(condition, what, bound=BOUND):
    """Polls `condition` until it is true and returns what it returned. After the bound it fails with `what`, a text or
    a function that makes one."""
    deadline = time.monotonic() + bound
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > deadline:
            raise AssertionError(f"waited {bound:.0f} s in vain: {what() if callable(what) else what}")
        time.sleep(0.02)


def stays(condition, what, seconds=1.0):
    """Fails with `what` if `condition` becomes false within `seconds`: for what must not happen."""
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        if not condition():
            raise AssertionError(f"did not stay so: {what() if callable(what) else what}")
        time.sleep(0.02)
