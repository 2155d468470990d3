"""The settings with a long list, and the application editor until its rows are shown."""
from . import scene
from .table import Row, median

SHORT, LONG = 100, 100_000
AIM_FRAME, AIM_PSS = 1.2, 1.25


def measure(options):
    count = options.count or 9
    found = {SHORT: [], LONG: []}
    for _ in range(count):  # in turn, so that what else the machine does falls on both alike
        for length, runs in found.items():
            runs += scene.run("settings_bench", length)

    def of(length, what):
        return median([run[what] for run in found[length]])

    rows = []
    for what, work, unit, aim in (
        ("frame", "first frame of the settings", "ms", AIM_FRAME),
        ("pss", "resident (PSS) with the settings", "MiB", AIM_PSS),
        ("scroll", "CPU time of a step through the list, painted", "ms", None),
    ):
        long, short = of(LONG, what), of(SHORT, what)
        rows.append(Row(
            f"{work}, {LONG:,} rows (median of {count}; {SHORT} rows)", f"{long:.2f} {unit}", "-", f"{short:.2f} {unit}", f"{long / short:.2f}",
            f"<= {aim} x {SHORT} rows" if aim else "-", long <= aim * short if aim else None,
        ))
    applications = found[SHORT][0]["applications"]
    rows.append(Row(f"application editor, until its rows are shown ({applications} installed)", f"{of(SHORT, 'editor'):.1f} ms"))
    return rows
