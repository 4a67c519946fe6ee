#!/usr/bin/env python3
"""Draws the results of run.sh as an SVG: for each workload, the time of an operation against the number of nodes.

usage: chart.py RESULTS.JSON
"""

import math
import sys
from xml.sax.saxutils import escape

from results import read_points, time_text

COLUMNS = 5
PANEL_WIDTH, PANEL_HEIGHT = 204, 140
PLOT_LEFT, PLOT_TOP, PLOT_WIDTH, PLOT_HEIGHT = 14, 40, 140, 72
MARGIN, HEADING = 16, 68
SMALLEST, LARGEST = 1e3, 1e6
ROOM_FOR_TEXT = 1.6  # in powers of ten, below the lowest point

STYLE = """
svg { color-scheme: light dark; }
text { font-family: system-ui, "Segoe UI", Helvetica, Arial, sans-serif; font-size: 11px; fill: #52514e; }
.paper { fill: #fcfcfb; }
.title { font-size: 16px; font-weight: 600; fill: #0b0b0b; }
.name { font-size: 12px; font-weight: 600; fill: #0b0b0b; }
.value { fill: #0b0b0b; }
.axis { stroke: #c3c2b7; stroke-width: 1; }
.linear { stroke: #c3c2b7; stroke-width: 1; stroke-dasharray: 3 3; fill: none; }
.line { stroke: #2a78d6; stroke-width: 2; fill: none; stroke-linejoin: round; stroke-linecap: round; }
.point { fill: #2a78d6; stroke: #fcfcfb; stroke-width: 2; }
@media (prefers-color-scheme: dark) {
  text { fill: #c3c2b7; }
  .paper { fill: #1a1a19; }
  .title, .name, .value { fill: #ffffff; }
  .axis, .linear { stroke: #52514e; }
  .line { stroke: #3987e5; }
  .point { fill: #3987e5; stroke: #1a1a19; }
}
"""


def count_text(count):
    return f"{count:,.0f}" if count >= 100 else f"{count:.3g}"


def allocations_text(count):
    return f"{count_text(count)} allocation" + ("" if count == 1 else "s")


def text(x, y, content, style="", anchor="start"):
    return f'<text x="{x:.1f}" y="{y:.1f}" class="{style}" text-anchor="{anchor}">{escape(content)}</text>'


def line(style, coordinates):
    return f'<polyline class="{style}" points="{" ".join(f"{x:.1f},{y:.1f}" for x, y in coordinates)}"/>'


class Scale:
    """One for all panels, so that heights compare: the same height is the same time."""

    def __init__(self, workloads):
        times = [point.nanoseconds for points in workloads.values() for point in points.values()]
        self.bottom = math.log10(min(times)) - ROOM_FOR_TEXT
        self.top = math.log10(max(times))

    def x(self, nodes):
        return PLOT_LEFT + PLOT_WIDTH * math.log10(nodes / SMALLEST) / math.log10(LARGEST / SMALLEST)

    def y(self, nanoseconds):
        share = (math.log10(nanoseconds) - self.bottom) / (self.top - self.bottom)
        return PLOT_TOP + PLOT_HEIGHT * (1 - share)


def linear_growth(points, scale):
    """From the first point on, as far as the panel reaches."""
    nodes, first = next(iter(points.items()))
    factor = min(LARGEST / nodes, 10**scale.top / first.nanoseconds)
    return [(scale.x(nodes), scale.y(first.nanoseconds)), (scale.x(nodes * factor), scale.y(first.nanoseconds * factor))]


def first_label(y):
    """Below the first point, or above it where the axis is near."""
    below = y + 17
    return below if below < PLOT_TOP + PLOT_HEIGHT - 2 else y - 9


def panel(name, points, scale):
    bottom = PLOT_TOP + PLOT_HEIGHT
    first, last = min(points), max(points)
    places = [(scale.x(nodes), scale.y(point.nanoseconds)) for nodes, point in points.items()]
    parts = [
        text(PLOT_LEFT, 14, name.replace("_", " "), "name"),
        text(PLOT_LEFT, 28, allocations_text(points[last].allocations)),
        line("axis", [(PLOT_LEFT, bottom), (PLOT_LEFT + PLOT_WIDTH, bottom)]),
        text(PLOT_LEFT, bottom + 14, "1,000", anchor="middle"),
        text(PLOT_LEFT + PLOT_WIDTH, bottom + 14, "1,000,000", anchor="middle"),
        line("linear", linear_growth(points, scale)),
        line("line", places),
        *(f'<circle class="point" cx="{x:.1f}" cy="{y:.1f}" r="4"/>' for x, y in places),
        text(places[-1][0] + 8, places[-1][1] + 4, time_text(points[last].nanoseconds), "value"),
    ]
    if first != last:
        parts.append(text(PLOT_LEFT, first_label(places[0][1]), time_text(points[first].nanoseconds)))
    return "\n".join(parts)


def drawing(workloads):
    scale = Scale(workloads)
    rows = math.ceil(len(workloads) / COLUMNS)
    width = 2 * MARGIN + COLUMNS * PANEL_WIDTH
    height = 2 * MARGIN + HEADING + rows * PANEL_HEIGHT
    parts = [
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" width="{width}" height="{height}"'
        ' role="img" aria-label="The time of an operation against the number of nodes">',
        f"<style>{STYLE}</style>",
        f'<rect class="paper" width="{width}" height="{height}"/>',
        text(MARGIN + PLOT_LEFT, MARGIN + 18, "The time of an operation as the graph grows", "title"),
        text(
            MARGIN + PLOT_LEFT,
            MARGIN + 38,
            "Processor time against the number of nodes, both logarithmic, on the same scale in all panels. Allocations: "
            "of an operation in the largest graph.",
        ),
        text(MARGIN + PLOT_LEFT, MARGIN + 54, "Dashed: growing in proportion to the graph."),
    ]
    for place, (name, points) in enumerate(workloads.items()):
        x = MARGIN + place % COLUMNS * PANEL_WIDTH
        y = MARGIN + HEADING + place // COLUMNS * PANEL_HEIGHT
        parts.append(f'<g transform="translate({x} {y})">\n{panel(name, points, scale)}\n</g>')
    return "\n".join([*parts, "</svg>"])


if __name__ == "__main__":
    print(drawing(read_points(sys.argv[1])))
