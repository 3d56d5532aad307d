#!/usr/bin/env python3
"""Draws the results of bench/run.sh: cost over size, both logarithmic, a panel for each order.

    bench/picture.py RESTORE.json > PICTURE.svg

A point is the median of a cell, the bar through it leads from the fastest to the slowest run. An
arrow stands where a program was stopped at the limit. Colours follow the viewer, light or dark.
"""
import json
import math
import sys
from html import escape

# Name in the results, label, colour on light and on dark ground, dashes of the line.
PROGRAMS = [
    ("orxrestore", "orxrestore", "#0b5cad", "#6cb6ff", ""),
    ("dd", "dd, synced", "#6e7681", "#8d96a0", "2 4"),
    ("db5.3_load", "db5.3_load", "#1a7f37", "#56d364", "8 3"),
    ("mdb_load", "mdb_load", "#cf222e", "#ff7b72", "8 3 2 3"),
    ("sqlite3", "sqlite3 .read", "#9a6700", "#e3b341", "5 3"),
    ("tkrzw", "tkrzw import", "#8250df", "#d2a8ff", "3 2"),
]
WIDTH, HEIGHT, LEFT, TOP, LABELS, BOTTOM = 330, 340, 62, 58, 108, 50
PANEL = LEFT + WIDTH + LABELS


class Scale:
    """A logarithmic axis from `low` to `high`, drawn from `start` on over `length`."""

    def __init__(self, low, high, start, length):
        self.low, self.high, self.start, self.length = math.log10(low), math.log10(high), start, length

    def __call__(self, value):
        share = (math.log10(value) - self.low) / ((self.high - self.low) or 1)
        return self.start + share * self.length


def theme(ground, ink, faint, column):
    own = "".join(f".p{i}{{color:{program[column]}}}" for i, program in enumerate(PROGRAMS))
    return f".ground{{fill:{ground}}} text{{fill:{ink}}} .grid{{stroke:{faint}}} {own}"


def style():
    return f"""<style>
svg{{font:12px sans-serif}}
{theme("#ffffff", "#1f2328", "#d1d9e0", 2)}
@media (prefers-color-scheme:dark){{{theme("#0d1117", "#e6edf3", "#30363d", 3)}}}
text.name,.point{{fill:currentColor}} .line,.bar{{stroke:currentColor}}
.line{{stroke-width:2;fill:none}} .bar{{stroke-width:4;stroke-opacity:.4}}
</style>"""


def number(value):
    for unit, name in ((1e6, " M"), (1e3, " k")):
        if value >= unit:
            return f"{value / unit:g}{name}"
    return f"{value:g}"


def axes(x, y, sizes, title):
    right, bottom = x.start + WIDTH, y.start
    yield f'<text x="{x.start}" y="{TOP - 14}" font-weight="bold">{escape(title)}</text>'
    for power in range(round(y.low), round(y.high) + 1):
        at = y(10.0**power)
        yield f'<path class="grid" d="M{x.start} {at:.1f}H{right}"/>'
        yield f'<text x="{x.start - 8}" y="{at + 4:.1f}" text-anchor="end">{10.0**power:g} s</text>'
    for size in sizes:
        yield f'<path class="grid" d="M{x(size):.1f} {TOP}V{bottom}"/>'
        yield f'<text x="{x(size):.1f}" y="{bottom + 18}" text-anchor="middle">{number(size)}</text>'
    yield f'<text x="{x.start + WIDTH / 2}" y="{bottom + 38}" text-anchor="middle">records</text>'


def spread(ends):
    """Moves the labels (y, name) apart, from top to bottom, and back up from the bottom."""
    ends.sort()
    places = [end[0] for end in ends]
    for i in range(1, len(places)):
        places[i] = max(places[i], places[i - 1] + 15)
    limit = TOP + HEIGHT
    for i in reversed(range(len(places))):
        places[i] = min(places[i], limit)
        limit = places[i] - 15
    return zip(places, ends)


def line_of(i, cells, x, y):
    """A program's line; the last item is its end: (y, number of the program)."""
    points = []
    for cell in cells:
        at = x(cell["records"])
        if "over_limit" in cell:
            top = y(cell["over_limit"])
            points.append((at, top))
            yield f'<path class="point p{i}" d="M{at - 6:.1f} {top + 5:.1f}h12l-6 -12z"/>'
            break  # with more records it was not run
        points.append((at, y(cell["median"])))
        fastest, slowest = y(min(cell["seconds"])), y(max(cell["seconds"]))
        yield f'<path class="bar p{i}" d="M{at:.1f} {fastest:.1f}V{slowest:.1f}"/>'
        yield f'<circle class="point p{i}" cx="{at:.1f}" cy="{points[-1][1]:.1f}" r="3.5"/>'
    path = "L".join(f"{px:.1f} {py:.1f}" for px, py in points)
    yield f'<path class="line p{i}" stroke-dasharray="{PROGRAMS[i][4]}" d="M{path}"/>'
    yield points[-1][1], i


def panel(cells, order, left, y):
    sizes = sorted({cell["records"] for cell in cells})
    x = Scale(sizes[0] / 1.3, sizes[-1] * 1.3, left + LEFT, WIDTH)
    yield from axes(x, y, sizes, f"Records in {order} order")
    ends = []
    for i, (name, *_) in reversed(list(enumerate(PROGRAMS))):  # the first lies above the others
        own = [cell for cell in cells if cell["program"] == name and cell["order"] == order]
        if not own:
            continue
        *drawn, end = line_of(i, sorted(own, key=lambda cell: cell["records"]), x, y)
        yield from drawn
        ends.append(end)
    for place, (_, i) in spread(ends):
        at = f'x="{x.start + WIDTH + 8}" y="{place + 4:.1f}"'
        yield f'<text class="name p{i}" {at}>{PROGRAMS[i][1]}</text>'


def note(results):
    machine = results["machine"]
    parts = [
        f"median, fastest and slowest of {results['runs']} runs",
        f"{machine['processors']} processors, {machine['file_system']}",
    ]
    if any("over_limit" in cell for cell in results["cells"]):
        parts.append(f"arrow: stopped after {results['peer_limit']} s")
    return "; ".join(parts)


def picture(results):
    cells = results["cells"]
    times = [t for cell in cells for t in (*cell["seconds"], cell.get("over_limit", 0)) if t > 0]
    low = 10.0 ** math.floor(math.log10(min(times)))
    high = 10.0 ** math.ceil(math.log10(max(times)))
    y = Scale(low, high, TOP + HEIGHT, -HEIGHT)
    orders = list(dict.fromkeys(cell["order"] for cell in cells))
    size = PANEL * len(orders), TOP + HEIGHT + BOTTOM
    width_height = 'width="{}" height="{}"'.format(*size)
    yield '<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {} {}" {}>'.format(*size, width_height)
    yield "<title>Seconds to load records, result on the disk</title>"
    yield style()
    yield f'<rect class="ground" {width_height}/>'
    heading = f"Time until the records are on the disk: {note(results)}"
    yield f'<text x="{LEFT}" y="22">{escape(heading)}</text>'
    for place, order in enumerate(orders):
        yield from panel(cells, order, place * PANEL, y)
    yield "</svg>"


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        print("\n".join(picture(json.load(file))))


if __name__ == "__main__":
    main()
