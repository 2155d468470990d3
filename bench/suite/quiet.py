"""What the programs cost while nobody touches them: CPU time and wake-ups. Ours polls over HTTPS every three seconds and takes
a sample of activity every five."""
from . import processes, scene
from .table import Row

AIM_CPU = 0.8  # x workrave
AIM_WAKEUPS = 1.0  # x safeeyes


def _of(peer, seconds):
    with scene.peer(peer) as process:
        scene.settle(process.pid)
        return processes.Watch(process.pid).over(seconds)


def measure(options):
    seconds = options.duration
    ours = {}
    for work, arguments in (("window open", {}), ("window closed", {"close_window": True})):
        with scene.polling_focus(**arguments) as (program, count):
            before = count()
            ours[work] = processes.Watch(program.pid).over(seconds)
            after = count()
        options.note(f"quiet, {work}: {after['requests'] - before['requests']} polls, {after['handshakes'] - before['handshakes']} TLS handshakes after the first")
    workrave = _of("workrave", seconds)
    safeeyes = _of("safeeyes", seconds)

    rows = [
        Row(f"CPU a minute, polling and tracking, {work}, over {seconds} s (workrave, safeeyes)", f"{cpu:.3f} s", f"{workrave[0]:.3f} s, {safeeyes[0]:.3f} s", "-",
            f"{cpu / workrave[0]:.2f}, {cpu / safeeyes[0]:.2f}", f"<= {AIM_CPU} x workrave", cpu <= AIM_CPU * workrave[0])
        for work, (cpu, _) in ours.items()
    ]
    rows += [
        Row(f"wake-ups a second, polling and tracking, {work}, over {seconds} s (safeeyes, workrave)", f"{wakeups:.1f}", f"{safeeyes[1]:.1f}, {workrave[1]:.1f}", "-",
            f"{wakeups / safeeyes[1]:.2f}, {wakeups / workrave[1]:.2f}", f"<= {AIM_WAKEUPS:.1f} x safeeyes", wakeups <= AIM_WAKEUPS * safeeyes[1])
        for work, (_, wakeups) in ours.items()
    ]
    return rows
