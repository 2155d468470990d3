"""Showing where the days went, out of a year of periods."""
import os
import tempfile

from . import scene
from .table import Row

PERIODS = 500_000


def measure(options):
    with tempfile.TemporaryDirectory(dir=os.environ["HOME"]) as folder:
        found = scene.run("year_bench", folder, options.count or PERIODS)[0]
    rows = [Row(f"the activity page's latest {span}, of {options.count or PERIODS:,} periods", f"{found[span]:.1f} ms") for span in ("day", "week", "month", "year")]
    options.note(f"year: the page of a year weighs {found['bytes'] / 1024:.0f} KiB")
    return rows
