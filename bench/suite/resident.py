"""What the programs keep resident, each running alone, settled."""
import time

from . import processes, scene
from .table import Row

AIM_SAFEEYES = 0.75
AIM_BARE = 1.3

# By then the start-up is long over, and so is what is prepared after it.
SETTLED = 5  # s


def _alone(program):
    with program as process:
        scene.settle(process.pid)
        time.sleep(SETTLED)
        return processes.pss(process.pid)


def measure(options):
    rows, found = [], {}
    for work, arguments in (("window open", {}), ("window closed", {"close_window": True})):
        with scene.polling_focus(**arguments) as (program, _):
            time.sleep(SETTLED)
            found[work] = processes.pss(program.pid)
    safeeyes = _alone(scene.peer("safeeyes"))
    workrave = _alone(scene.peer("workrave"))
    bare = _alone(scene.running(scene.BIN / "bare_quick"))
    for work, ours in found.items():
        rows.append(Row(
            f"resident (PSS), {work} (safeeyes, bare Qt Quick)", f"{ours:.1f} MiB", f"{safeeyes:.1f} MiB", f"{bare:.1f} MiB",
            f"{ours / safeeyes:.2f} / {ours / bare:.2f}", f"<= {AIM_SAFEEYES} x safeeyes, <= {AIM_BARE} x bare",
            ours <= AIM_SAFEEYES * safeeyes and ours <= AIM_BARE * bare,
        ))
    options.note(f"resident: workrave {workrave:.1f} MiB")
    return rows
