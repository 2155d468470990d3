"""The table that script/bench prints."""
import math
import statistics
from dataclasses import asdict, dataclass

HEAD = ("work", "ours", "peer", "limit", "ratio", "aim", "reached")


@dataclass
class Row:
    """One line. The texts carry their units; `reached` is None where nothing is aimed at."""

    work: str
    ours: str
    peer: str = "-"
    limit: str = "-"
    ratio: str = "-"
    aim: str = "-"
    reached: bool | None = None

    def cells(self):
        fields = asdict(self)
        fields["reached"] = {True: "yes", False: "no", None: "-"}[self.reached]
        return tuple(fields[name] for name in HEAD)


def render(rows):
    """The rows as a table that reads well in a terminal and in Markdown."""
    lines = [HEAD, *(row.cells() for row in rows)]
    widths = [max(len(line[column]) for line in lines) for column in range(len(HEAD))]
    rule = tuple("-" * width for width in widths)
    return "\n".join(
        "| " + " | ".join(cell.ljust(width) for cell, width in zip(line, widths)) + " |" for line in [HEAD, rule, *lines[1:]]
    )


def median(values):
    return statistics.median(values)


def summary(values):
    """Median, 95 % and worst of times in ms."""
    ninety_five = sorted(values)[math.ceil(0.95 * len(values)) - 1]
    return f"{median(values):.1f} / {ninety_five:.1f} / {max(values):.1f} ms"


def spread(values):
    """The middle half, for those who want to know how far to trust a median."""
    low, _, high = statistics.quantiles(values, n=4)
    return low, high


def times(ours, theirs):
    """`ours` as a multiple of `theirs`."""
    return ours / theirs if theirs else float("inf")
