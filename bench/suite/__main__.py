"""One measurement, run by script/bench inside a desktop of its own.

    python3 -m suite NAME FILE --duration S --count N

Writes {"rows": […], "notes": […]} to FILE.
"""
import argparse
import importlib
import json
from dataclasses import asdict
from pathlib import Path

parser = argparse.ArgumentParser()
parser.add_argument("name")
parser.add_argument("file", type=Path)
parser.add_argument("--duration", type=int, required=True)
parser.add_argument("--count", type=int, default=0)
options = parser.parse_args()
notes = []
options.note = notes.append
module = "wayland" if options.name in ("sway", "kwin", "gnome") else options.name
rows = importlib.import_module(f"suite.{module}").measure(options)
options.file.write_text(json.dumps({"rows": [asdict(row) for row in rows], "notes": notes}))
