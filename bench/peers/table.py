#!/usr/bin/env python3
"""Prints the results of run.sh as tables: medians, ks_graph's time as a multiple of each program's, and memory.

usage: table.py [--markdown] RESULTS.CSV
"""

import csv
import statistics
import sys
from collections import defaultdict

BASE = "ks_graph"


class Results:
    """The repeats of every program, workload and number of nodes."""

    def __init__(self, rows):
        self.times = defaultdict(list)
        self.peaks = defaultdict(list)
        for program, workload, n, nanoseconds, kilobytes in rows:
            key = program, workload, int(n)
            self.times[key] += [float(nanoseconds)] if nanoseconds != "NA" else []
            self.peaks[key] += [int(kilobytes)] if kilobytes != "NA" else []
        self.programs = list(dict.fromkeys(program for program, _, _ in self.peaks))
        self.workloads = [w for w in dict.fromkeys(workload for _, workload, _ in self.peaks) if w != "rss_start"]
        self.sizes = sorted({n for _, _, n in self.peaks})

    def nanoseconds(self, program, workload, n):
        return median(self.times.get((program, workload, n), []))

    def ratio(self, program, workload, n):
        base = self.nanoseconds(BASE, workload, n)
        other = self.nanoseconds(program, workload, n)
        return base / other if base is not None and other else None

    def bytes_a_node(self, program, workload, n):
        """Up to the end of that workload, without what the program holds before it begins."""
        peak = median(self.peaks.get((program, workload, n), []))
        start = median(self.peaks.get((program, "rss_start", n), []))
        return (peak - start) * 1024 / n if peak is not None and start is not None else None


def median(values):
    return statistics.median(values) if values else None


def number(value):
    if value is None:
        return "-"
    return f"{value:,.0f}" if value >= 100 else f"{value:.3g}"


def as_text(header, rows):
    lines = [header, *rows]
    widths = [max(len(line[column]) for line in lines) for column in range(len(header))]
    return "\n".join(
        "  ".join([line[0].ljust(widths[0]), *(cell.rjust(width) for cell, width in zip(line[1:], widths[1:]))])
        for line in lines
    )


def as_markdown(header, rows):
    ruler = ["---", *["--:"] * (len(header) - 1)]
    return "\n".join("| " + " | ".join(line) + " |" for line in [header, ruler, *rows])


def tables(results):
    """Title, header and rows of each table."""
    header = ["", *results.programs]

    def rows(names, value):
        return [[name, *(number(value(program, name)) for program in results.programs)] for name in names]

    for n in results.sizes:
        yield (
            f"{n:,} nodes: nanoseconds an operation",
            header,
            rows(results.workloads, lambda program, workload: results.nanoseconds(program, workload, n)),
        )
        yield (
            f"{n:,} nodes: {BASE}'s time as a multiple of each program's",
            header,
            rows(results.workloads, lambda program, workload: results.ratio(program, workload, n)),
        )
        moments = {"the graph": "connect", "at most": "clear"}
        yield (
            f"{n:,} nodes: bytes a node",
            header,
            rows(moments, lambda program, moment: results.bytes_a_node(program, moments[moment], n)),
        )


def main(arguments):
    markdown = arguments[:1] == ["--markdown"]
    with open(arguments[-1], newline="", encoding="utf-8") as file:
        results = Results(csv.reader(file))
    for title, header, rows in tables(results):
        if markdown:
            print(f"### {title}\n\n{as_markdown(header, rows)}\n")
        else:
            print(f"{title}\n{as_text(header, rows)}\n")


if __name__ == "__main__":
    main(sys.argv[1:])
