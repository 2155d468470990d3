"""Adding one domain to a long list of them."""
from . import scene
from .table import Row

AIM = 0.05


def measure(options):
    rows = []
    for length in (10_000, 1_000_000):
        found = scene.run("domains_bench", length, options.count or 25)[0]
        for what, work in (("add", ""), ("shared", ", while a view holds it")):
            rows.append(Row(
                f"adding a domain to {length:,}{work} (sorting anew)", f"{found[what]:.3f} ms", f"{found['sort']:.2f} ms", "-", f"{found[what] / found['sort']:.4f}",
                f"<= {AIM} x sorting", found[what] <= AIM * found["sort"],
            ))
        options.note(f"domains: the first addition to {length:,} that were just loaded takes {found['first']:.2f} ms")
    return rows
