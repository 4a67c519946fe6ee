"""What run.sh has measured."""

import json
import statistics
from collections import defaultdict


class Point:
    """The medians of one workload for one number of nodes."""

    def __init__(self, runs):
        self.nanoseconds = statistics.median(run["real_time"] for run in runs)
        self.allocations = statistics.median(run["allocations"] for run in runs)


def read_points(path):
    """By workload, in the order in which those of the largest graph ran, and by number of nodes."""
    with open(path, encoding="utf-8") as file:
        runs = json.load(file)["benchmarks"]
    grouped = defaultdict(lambda: defaultdict(list))
    for run in reversed(runs):
        name, nodes = run["name"].split("/")[:2]
        grouped[name]  # in its place, even if this run has failed
        if run["run_type"] == "iteration" and "error_occurred" not in run:
            grouped[name][int(nodes)].append(run)
    return {
        name: {nodes: Point(runs) for nodes, runs in sorted(grouped[name].items())}
        for name in reversed(grouped)
        if grouped[name]
    }


def time_text(nanoseconds):
    for unit, size in ("s", 1e9), ("ms", 1e6), ("µs", 1e3):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"
