#!/usr/bin/env python3
"""Prints how the results of run.sh grow, in Markdown: for each workload, the time of an operation in the smallest graph,
and by what it is multiplied each time the graph has more nodes.

usage: table.py RESULTS.JSON
"""

import itertools
import sys

from results import read_points, time_text


def row(name, points, sizes):
    """A size that was not measured leaves its cells empty."""
    first = points.get(sizes[0])
    cells = [name, time_text(first.nanoseconds) if first else ""]
    for smaller, larger in itertools.pairwise(sizes):
        both = smaller in points and larger in points
        cells.append(f"{points[larger].nanoseconds / points[smaller].nanoseconds:.2f}" if both else "")
    return cells


def table(workloads):
    sizes = sorted({nodes for points in workloads.values() for nodes in points})
    header = ["workload", f"at {sizes[0]:,}"]
    header += [f"{smaller:,} to {larger:,}" for smaller, larger in itertools.pairwise(sizes)]
    ruler = ["---", *["--:"] * (len(header) - 1)]
    rows = [row(f"`{name}`", points, sizes) for name, points in workloads.items()]
    return "\n".join("| " + " | ".join(cells) + " |" for cells in [header, ruler, *rows])


if __name__ == "__main__":
    print(table(read_points(sys.argv[1])))
