"""Listing the installed applications."""
from . import scene
from .table import Row

ENTRIES = 5_000
ENTRIES_AIM = 1.25
BUNDLES = 2_000
BUNDLES_AIM = 1.0


def measure(options):
    rounds = options.count or 15
    entries = scene.run("catalog_bench", "entries", ENTRIES, rounds)[0]
    to_limit = entries["ours"] / entries["limit"]
    bundles = scene.run("catalog_bench", "bundles", BUNDLES, rounds)[0]
    to_expat = bundles["ours"] / bundles["expat"]
    options.note(f"catalogue: QSettings takes {entries['settings']:.0f} ms for the {ENTRIES:,} desktop entries")
    options.note(f"catalogue: a walk that enters the {BUNDLES:,} bundles takes {bundles['entering']:.1f} ms")
    return [
        Row(
            f"catalogue of {ENTRIES:,} desktop entries (GAppInfo; limit: reading them)", f"{entries['ours']:.1f} ms", f"{entries['gio']:.0f} ms",
            f"{entries['limit']:.1f} ms", f"{to_limit:.2f}", f"<= {ENTRIES_AIM} x limit", to_limit <= ENTRIES_AIM,
        ),
        Row(
            f"catalogue of {BUNDLES:,} bundles (expat alone; limit: walking past them)", f"{bundles['ours']:.1f} ms", f"{bundles['expat']:.1f} ms",
            f"{bundles['limit']:.1f} ms", f"{to_expat:.2f}", f"<= {BUNDLES_AIM} x expat", to_expat <= BUNDLES_AIM,
        ),
    ]
