"""From the activation of a blocked application to the painted cover."""
from . import scene
from .table import Row, median, summary

FRAME = 1000 / 60  # ms that one picture of a common display stands
AIM_MEDIAN = 6.0  # ms


def _probe(count, *options):
    lines = scene.run("activation_probe", "--blocked", scene.BLOCKED, "--other", scene.OTHER, "--count", count, *options)
    return [line["active"] for line in lines if "active" in line], lines[-1]["look_us"]


def _row(work, ours, peer, limit):
    within = sum(value <= FRAME for value in ours)
    return Row(
        work, summary(ours), summary(peer), summary(limit),
        f"{median(ours) / median(peer):.2f} / {median(ours) / median(limit):.2f}",
        f"<= {AIM_MEDIAN:.0f} / {FRAME:.1f} ms ({within} of {len(ours)} within a frame)",
        median(ours) <= AIM_MEDIAN and max(ours) <= FRAME,
    )


def _bare(program, arguments, count, *options):
    with scene.running(scene.BIN / program, *arguments) as bare:
        scene.until(lambda: "ready" in bare.output, f"{program} watches")
        return _probe(count, *options)[0]


def measure(options):
    scene.install_desktop_entries()
    count = options.count or 100
    rows = []
    for work, extra in (("", ()), (", over a full-screen client", ("--full-screen",))):
        # In turns of a quarter each, so that what else the machine does falls on all alike.
        ours, quick, managed, bypassing, looks = [], [], [], [], []
        for _ in range(4):
            with scene.focus("--focus-active", close_window=True):
                values, look = _probe(count // 4, *extra)
            ours += values
            looks.append(look)
            quick += _bare("bare_quick_cover", ["--blocked", scene.BLOCKED], count // 4, *extra)
            managed += _bare("bare_cover", ["--blocked", scene.BLOCKED], count // 4, *extra)
            bypassing += _bare("bare_cover", ["--blocked", scene.BLOCKED, "--override-redirect"], count // 4, *extra)
        rows.append(_row(f"activation to painted cover{work} (median / 95 % / worst of {len(ours)})", ours, quick, managed))
        options.note(f"cover{work}: without the window manager, plain X requests: {summary(bypassing)}; one look of the probe takes {median(looks):.0f} µs, "
                     "and there is a tenth of a millisecond between two")

    # The first after a start, each time a new start. The second activation of the same start is not looked at.
    starts = max(3, count // 10)
    first, first_quick, first_managed = [], [], []
    for _ in range(starts):
        with scene.focus("--focus-active", close_window=True):
            first += _probe(1)[0]
        first_quick += _bare("bare_quick_cover", ["--blocked", scene.BLOCKED], 1)
        first_managed += _bare("bare_cover", ["--blocked", scene.BLOCKED], 1)
    rows.append(_row(f"the first cover after a start (median / 95 % / worst of {starts})", first, first_quick, first_managed))

    with scene.focus("--focus-active"):
        opened = _probe(count // 2)[0]
    rows.append(Row(f"activation to painted cover while our own window breathes (median / 95 % / worst of {len(opened)})", summary(opened)))
    return rows
