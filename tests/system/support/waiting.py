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


def happens(condition, seconds=2.0):
    """Whether `condition` becomes true within `seconds`: for what is tried again where it does not."""
    deadline = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > deadline:
            return False
        time.sleep(0.02)
    return True


def comes_to_stay(condition, what, seconds=1.0):
    """Waits until `condition` has been true for `seconds` without a break: for what may still be on its way."""
    since = None

    def has_stayed():
        nonlocal since
        if not condition():
            since = None
        elif since is None:
            since = time.monotonic()
        return since is not None and time.monotonic() - since >= seconds

    until(has_stayed, what)


def stays(condition, what, seconds=1.0):
    """Fails with `what` if `condition` becomes false within `seconds`: for what must not happen."""
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        if not condition():
            raise AssertionError(f"did not stay so: {what() if callable(what) else what}")
        time.sleep(0.02)
