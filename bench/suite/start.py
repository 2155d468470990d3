"""From the start of the program to its first window. On a display without a window manager."""
import shutil

from . import scene
from .table import Row, median

AIM = 0.9


def measure(options):
    count = options.count or 15
    programs = {
        "ours": [scene.BIN / "orvanta-focus"],
        "workrave": [shutil.which("workrave")],
        "bare": [scene.BIN / "bare_quick"],
    }
    found = {name: [] for name in programs}
    for _ in range(count):  # in turn, so that what else the machine does falls on all alike
        for name, command in programs.items():
            found[name] += scene.run("first_window", "--", *command, environment={"ORVANTA_SERVICE_ORIGIN": "http://127.0.0.1:9"})

    def of(name, what):
        return median([start[what] for start in found[name]])

    rows = []
    for what, work in (("mapped", "first window on the screen"), ("painted", "first window painted"), ("cpu", "CPU time until it is painted")):
        ours, workrave, bare = of("ours", what), of("workrave", what), of("bare", what)
        aimed = what != "cpu"
        rows.append(Row(
            f"{work} (median of {count}; workrave, bare Qt Quick)", f"{ours:.0f} ms", f"{workrave:.0f} ms", f"{bare:.0f} ms", f"{ours / workrave:.2f} / {ours / bare:.2f}",
            f"<= {AIM} x workrave" if aimed else "-", ours <= AIM * workrave if aimed else None,
        ))
    return rows
