"""Judges what llvm-cov shows: every line and every branch side of the sources has to be covered or taken out by a
comment that says why it cannot happen. What the instances of a template have in common is covered if one of them
covers it; a condition that the compiler decides is no branch.

    judge.py SOURCE-FOLDER EXPORT-FOLDER

EXPORT-FOLDER holds what llvm-cov says of each test program: the lines as NAME.lcov, the branches as NAME.json and, as
NAME.txt, the text, which alone tells where the compiler decides.
"""

import collections
import json
import os
import pathlib
import re
import sys

SHOWN_FILE = re.compile(r"(/.*):")
FOLDED = re.compile(r" *\|  Branch \((\d+):(\d+)\): \[Folded - Ignored\]")
MARK = re.compile(r"//\s*coverage:(.*)")


class Counts:
    """Of one file, over all programs."""

    def __init__(self):
        self.lines = collections.Counter()
        self.branches = collections.defaultdict(lambda: [0, 0])  # by where the condition starts and ends
        self.folded = set()

    def sides(self):
        """((line, column), which side, how often) of each branch."""
        for where, counts in sorted(self.branches.items()):
            if any(counts) or where[:2] not in self.folded:
                for side, count in zip(("true", "false"), counts):
                    yield where[:2], side, count


def source_file(name):
    """A compiler that is given relative names, as by a compiler cache, leaves its folder in front."""
    return pathlib.Path(os.path.normpath(name))


def read_exports(folder):
    """{file: its counts}"""
    files = collections.defaultdict(Counts)
    for lcov in folder.glob("*.lcov"):
        for entry in lcov.read_text().splitlines():
            kind, _, value = entry.partition(":")
            if kind == "SF":
                counts = files[source_file(value)]
            elif kind == "DA":
                line, count = value.split(",")[:2]
                counts.lines[int(line)] += int(count)
    for exported in folder.glob("*.json"):
        for entry in json.loads(exported.read_text())["data"][0]["files"]:
            counts = files[source_file(entry["filename"])]
            for *where, count_true, count_false, _, _, _ in entry["branches"]:
                sides = counts.branches[tuple(where)]
                sides[0] += count_true
                sides[1] += count_false
    for shown in folder.glob("*.txt"):
        for text in shown.read_text().splitlines():
            if file := SHOWN_FILE.fullmatch(text):
                counts = files[source_file(file[1])]
            elif folded := FOLDED.match(text):
                counts.folded.add((int(folded[1]), int(folded[2])))
    return files


def marked_lines(file):
    """{line: the reason, perhaps empty}. A mark that has a line of its own means the next one."""
    marks = {}
    for number, line in enumerate(file.read_text().splitlines(), 1):
        if mark := MARK.search(line):
            marks[number + (not line[: mark.start()].strip())] = mark[1].strip()
    return marks


class Tally:
    def __init__(self):
        self.total = 0
        self.covered = 0
        self.left_out = 0

    def add(self, is_covered, is_marked):
        """Whether it is missing."""
        self.total += 1
        self.covered += is_covered
        self.left_out += is_marked and not is_covered
        return not is_covered and not is_marked

    def complete(self):
        return self.total > 0 and self.covered + self.left_out == self.total

    def __str__(self):
        share = 100 * self.covered / self.total if self.total else 0
        return f"{self.covered} of {self.total} covered ({share:.2f} %), {self.left_out} taken out"


def complain(text):
    print(text, file=sys.stderr)


def check_marks(name, marks, needed):
    """Prints the good ones; whether all are."""
    good = True
    for line, reason in marks.items():
        if not reason:
            complain(f"{name}:{line}: the mark gives no reason")
        elif line not in needed:
            complain(f"{name}:{line}: the mark is not needed: everything on the line is covered")
        else:
            print(f"coverage: {name}:{line} is taken out: {reason}")
            continue
        good = False
    return good


def main(folder, exports):
    folder = pathlib.Path(folder)
    counts_of = read_exports(pathlib.Path(exports))
    lines, branches = Tally(), Tally()
    marks_are_good = True

    for file in sorted(path for path in folder.rglob("*") if path.suffix in (".h", ".cpp")):
        name = f"{folder.name}/{file.relative_to(folder)}"
        marks = marked_lines(file)
        needed = set()
        for line, count in sorted(counts_of[file].lines.items()):
            if not count:
                needed.add(line)
            if lines.add(count > 0, line in marks):
                complain(f"{name}:{line}: never runs")
        for (line, column), side, count in counts_of[file].sides():
            if not count:
                needed.add(line)
            if branches.add(count > 0, line in marks):
                complain(f"{name}:{line}:{column}: is never {side}")
        marks_are_good &= check_marks(name, marks, needed)

    print(f"coverage: lines: {lines}")
    print(f"coverage: branch sides: {branches}")
    return 0 if lines.complete() and branches.complete() and marks_are_good else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
