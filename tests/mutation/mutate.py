#!/usr/bin/env python3
"""Breaks the library on purpose, one small change at a time, and tells which changes the tests do not notice.

A mutant that does not compile does not count, nor does one whose object code, optimised, is that of the library: that
one is equivalent. A test program that fails, crashes, or uses five times the time or far more memory than it does
otherwise kills the mutant. survivors.txt gives a reason for each mutant that lives.

Everything is built in build/mutation of the checkout; what is broken are copies there.
"""

import argparse
import concurrent.futures
import contextlib
import dataclasses
import hashlib
import math
import os
import pathlib
import queue
import re
import shlex
import shutil
import signal
import subprocess
import sys
import threading

from mutants import mutants_of

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]
WORK = ROOT / "build" / "mutation"
SURVIVORS = HERE / "survivors.txt"

PROGRAMS = {"foundation_tests": "foundation", "allocation_tests": "allocation", "ks_graph_tests": "ks_graph"}

# Few tests that take most of the time: they are tried last.
SLOW_TESTS = ("BadInputDepth.*:DamagedLayoutFile/*.MayHave*:GraphLayoutFile/*.ComesBackWithALotOfNames:"
              "RenamingOfManyNames.*:SceneXml.HundredThousandConnections*:Seeds/GroupUngroupRandomStory.*")

@dataclasses.dataclass(frozen=True)
class Tests:
    program: str
    filter: str
    # Only what is broken is compiled so; that finds what it does to memory and what it does not give back.
    sanitized: bool = False

    @property
    def file(self):
        return self.program + ("-sanitized" if self.sanitized else "")


NOT_SLOW = [Tests("foundation_tests", "*"), Tests("allocation_tests", "*"), Tests("ks_graph_tests", f"*-{SLOW_TESTS}")]
SLOW = [Tests("ks_graph_tests", SLOW_TESTS)]

# Which test files tell first, where it is not those that begin with the name of the file.
OWN_TESTS = {
    "ArrayBase": ["Array"],
    "Color4": ["ValueTypes"],
    "CompoundMover": ["GraphSceneMove", "GroupUngroup"],
    "ConnectionIndex": ["PinLists", "GraphSceneArrayOrder"],
    "Flag": ["ValueTypes"],
    "FullNameWalk": ["GraphSceneFreeNames", "GraphSceneQueries"],
    "GraphNodeBase": ["GraphNode"],
    "GraphNodePin": ["GraphNodePin", "PinLists"],
    "KS_String": ["KS_String", "FileStream"],
    "Names": ["GraphSceneFreeNames", "GraphNodeTexts", "GraphNodePin"],
    "Optional": ["ValueTypes"],
    "PointerSet": ["GraphScene"],
    "ScopeExit": ["GraphNode"],
    "Tuple2": ["ValueTypes"],
    "ks_basic": ["KS_Class"],
    "ks_fileio": ["FileStream"],
}

PRECOMPILED = """#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>
"""

# Warnings are of no interest here, but without a result there would be no saying what a mutant does.
FLAGS = ["-std=c++20", "-w", "-Werror=return-type", "-DKS_GRAPH_STATIC", f"-I{ROOT}/tests",
         f'-DTEST_DATA_DIR="{ROOT}/tests/data"', f'-DDOCS_DIR="{ROOT}/docs"']
UNOPTIMISED = [*FLAGS, "-O0", "-fpch-instantiate-templates"]
SANITIZER = ["-fsanitize=address,undefined", "-fno-sanitize-recover=all"]
# A vector that both kinds of code use looks wrong to the one.
SANITIZER_OPTIONS = "detect_container_overflow=0:hard_rss_limit_mb=4096"
LIBRARIES = ["-lgmock_main", "-lgmock", "-lgtest", "-pthread"]

MEMORY = 4 << 30
FILE_SIZE = 256 << 20


def own_program(file):
    return "foundation_tests" if file.startswith("lib/foundation/") else "ks_graph_tests"


def run(command, **options):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, **options)


def die(text):
    print(f"FAILED: {text}", file=sys.stderr)
    sys.exit(1)


class Tree:
    """The sources, their objects, and who includes what."""

    def __init__(self, programs, jobs):
        self.library = sorted(ROOT.glob("lib/*/*.cpp"))
        support = sorted(ROOT.glob("tests/support/*.cpp"))
        self.tests = {program: sorted(ROOT.glob(f"tests/{folder}/*.cpp")) + support
                      for program, folder in PROGRAMS.items() if program in programs}
        self.linker = ["-fuse-ld=lld"] if shutil.which("ld.lld") else []
        self.build(jobs)
        self.includers = self.read_includers()

    def sources(self):
        return self.library + sorted({source for sources in self.tests.values() for source in sources})

    @staticmethod
    def object_of(source, folder=WORK / "objects"):
        return folder / source.relative_to(ROOT).with_suffix(".o")

    def build(self, jobs):
        (WORK / "objects").mkdir(parents=True, exist_ok=True)
        header = WORK / "precompiled.h"
        if not header.exists() or header.read_text() != PRECOMPILED:
            header.write_text(PRECOMPILED)
        flags = shlex.join([*UNOPTIMISED, f"-I{ROOT}/lib"])
        lines = [
            "rule header",
            f"  command = clang++ {flags} -x c++-header $in -o $out -MD -MF $out.d",
            "  deps = gcc",
            "  depfile = $out.d",
            "rule compile",
            f"  command = clang++ {flags} -include-pch {WORK}/precompiled.pch -c $in -o $out -MMD -MF $out.d",
            "  deps = gcc",
            "  depfile = $out.d",
            f"build {WORK}/precompiled.pch: header {header}",
        ]
        for source in self.sources():
            lines.append(f"build {self.object_of(source)}: compile {source} | {WORK}/precompiled.pch")
        (WORK / "build.ninja").write_text("\n".join(lines) + "\n")
        built = run(["ninja", "-C", WORK, "-j", str(jobs)])
        if built.returncode:
            die(f"the unbroken library does not build:\n{built.stdout[-4000:]}")

    def link(self, tests, broken, folder):
        """With the objects {source: object} in place of the usual ones, and in front of all others."""
        sources = self.tests[tests.program] + self.library
        objects = [broken[source] for source in broken if source in sources]
        objects += [self.object_of(source) for source in sources if source not in broken]
        sanitizer = SANITIZER if tests.sanitized else []
        return run(["clang++", *self.linker, *sanitizer, *objects, "-o", folder / tests.file,
                    *LIBRARIES]).returncode == 0

    def read_includers(self):
        """{source or header: the sources that are compiled anew when it changes}"""
        includers = {}
        by_object = {str(self.object_of(source)): source for source in self.sources()}
        source = None
        for line in run(["ninja", "-C", WORK, "-t", "deps"]).stdout.splitlines():
            if line.startswith("    "):
                if source is not None:
                    includers.setdefault(pathlib.Path(os.path.normpath(line.strip())), []).append(source)
            elif line:
                source = by_object.get(line.split(":")[0])
        return includers


class Limits:
    """What the unbroken tests need: {tests: seconds of the processor's time}."""

    def __init__(self, tree):
        self.tree = tree
        self.seconds = {}
        self.lock = threading.Lock()

    def of(self, tests):
        with self.lock:
            if tests not in self.seconds:
                if not self.tree.link(tests, {}, WORK):
                    die(f"the unbroken {tests} cannot be linked")
                process = start(tests, 600, WORK)
                _, status, used = os.wait4(process.pid, 0)
                process.returncode = os.waitstatus_to_exitcode(status)
                if process.returncode:
                    die(f"the unbroken {tests} do not pass")
                self.seconds[tests] = used.ru_utime + used.ru_stime
            return self.seconds[tests]


def start(tests, seconds, folder):
    limits = ["prlimit", f"--cpu={math.ceil(seconds) + 1}", f"--fsize={FILE_SIZE}", "--core=0"]
    if not tests.sanitized:
        limits.append(f"--as={MEMORY}")
    command = [*limits, folder / tests.file, f"--gtest_filter={tests.filter}", "--gtest_fail_fast", "--gtest_brief=1"]
    environment = {**os.environ, "TMPDIR": str(folder), "TEST_TMPDIR": str(folder), "MALLOC_PERTURB_": "165",
                   "ASAN_OPTIONS": SANITIZER_OPTIONS}
    return subprocess.Popen(command, cwd=folder, env=environment, stdin=subprocess.DEVNULL,
                            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True)


def passes(tests, seconds, folder):
    """The processor's time is limited, so that a busy machine kills nobody; who waits without end is found later."""
    process = start(tests, seconds, folder)
    try:
        return process.wait(30 + 10 * seconds) == 0
    except subprocess.TimeoutExpired:
        return False
    finally:
        with contextlib.suppress(ProcessLookupError):
            os.killpg(process.pid, signal.SIGKILL)
        process.wait()


class Judge:
    def __init__(self, tree, jobs, own_tests_only):
        self.tree = tree
        self.own_tests_only = own_tests_only
        self.limits = Limits(tree)
        self.folders = queue.SimpleQueue()
        for number in range(jobs):
            folder = WORK / f"worker-{number}"
            shutil.rmtree(folder, ignore_errors=True)
            shutil.copytree(ROOT / "lib", folder / "lib")
            self.folders.put(folder)
        self.unbroken = {}
        self.lock = threading.Lock()

    def own_tests(self, file):
        stem = pathlib.Path(file).stem
        starts = tuple(OWN_TESTS.get(stem, [stem]))
        return [source for sources in self.tree.tests.values() for source in sources
                if source.name.startswith(starts) and source.name.endswith("Test.cpp")]

    def own_filter(self, file):
        suites = {suite for source in self.own_tests(file)
                  for suite in re.findall(r"TEST(?:_[FP])?\(\s*(\w+)\s*,|TYPED_TEST\(\s*(\w+)", source.read_text())}
        return ":".join(f"*{name}*.*" for name in sorted({a or b for a, b in suites})) + f"-{SLOW_TESTS}"

    def stages(self, file):
        """Sources to compile anew, and what to run then. The objects of broken headers stand first in the link, so
        theirs are the inline functions that all objects call; so most are killed before all users are compiled."""
        users = self.tree.includers[ROOT / file]
        own = [source for source in self.own_tests(file) if source in users]
        library = [source for source in users if source in self.tree.library]
        rest = [source for source in users if source not in own and source not in library]
        first = own_program(file)
        own_filter = self.own_filter(file)
        quick = [Tests(first, own_filter)]
        sanitized = [Tests(first, own_filter, sanitized=True)]
        if self.own_tests_only:
            return [(own + library, quick + sanitized)]
        everything = quick + NOT_SLOW + sanitized + SLOW
        stages = [(own, quick)] if own else []
        if library:
            stages.append((library, quick if rest else everything))
        return stages + ([(rest, everything)] if rest else [])

    def judge(self, mutant):
        """(verdict, by what): killed, survived, equivalent or invalid, which does not compile."""
        folder = self.folders.get()
        target = folder / mutant.file
        original = target.read_text()
        try:
            target.write_text(mutant.apply(original))
            return self.try_stages(mutant, folder)
        finally:
            target.write_text(original)
            shutil.rmtree(folder / "objects", ignore_errors=True)
            self.folders.put(folder)

    def try_stages(self, mutant, folder):
        broken = {}
        for sources, all_tests in self.stages(mutant.file):
            if not self.compile(sources, broken, folder):
                return "invalid", "compiler"
            linked = set()
            for tests in all_tests:
                if tests.file not in linked and not self.link(tests, mutant.file, broken, folder):
                    return "invalid", "linker"
                linked.add(tests.file)
                if not passes(tests, 5 * self.limits.of(tests), folder):
                    return "killed", f"{tests.file} {tests.filter}"
        return ("equivalent" if self.is_equivalent(broken, folder) else "survived"), ""

    def compile(self, sources, broken, folder, options=()):
        for source in sources:
            target = self.tree.object_of(source, folder / ("sanitized" if options else "objects"))
            target.parent.mkdir(parents=True, exist_ok=True)
            precompiled = [] if options else ["-include-pch", WORK / "precompiled.pch"]
            if run(["clang++", *UNOPTIMISED, *options, f"-I{folder}/lib", *precompiled,
                    "-c", self.broken_source(source, folder), "-o", target]).returncode:
                return False
            broken[source] = target
        return True

    @staticmethod
    def broken_source(source, folder):
        return folder / source.relative_to(ROOT) if source.is_relative_to(ROOT / "lib") else source

    def link(self, tests, file, broken, folder):
        if tests.sanitized:
            sources = {*self.tree.library, *self.own_tests(file)}
            sanitized = {}
            if not self.compile([source for source in broken if source in sources], sanitized, folder, SANITIZER):
                return False
            broken = {**sanitized, **{source: plain for source, plain in broken.items() if source not in sanitized}}
        return self.tree.link(tests, broken, folder)

    def is_equivalent(self, broken, folder):
        with self.lock:
            for source in broken:
                if source not in self.unbroken:
                    self.unbroken[source] = self.optimised(source, ROOT, folder)
        return all(self.optimised(source, folder, folder) == self.unbroken[source] for source in broken)

    def optimised(self, source, tree, folder):
        """The object code without the folder's name."""
        target = folder / "optimised.o"
        file = self.broken_source(source, tree)
        compiled = run(["clang++", *FLAGS, "-O1", f"-ffile-prefix-map={tree}=.", f"-I{tree}/lib", "-c", file,
                        "-o", target])
        return target.read_bytes() if compiled.returncode == 0 else None


def read_survivors():
    """{key of a mutant: the reason why it may live}"""
    reasons = {}
    text = SURVIVORS.read_text() if SURVIVORS.exists() else ""
    blocks = [block for block in re.split(r"\n\s*\n", text) if block.strip() and not block.startswith("#")]
    for block in blocks:
        match = re.fullmatch(r"(lib/\S+: [^\n]*)\n  ([^\n]*)\n  because (\S.*)", block.strip(), re.DOTALL)
        if not match:
            die(f"survivors.txt: no line of code, change and reason in:\n{block}")
        reasons[match[1], match[2]] = match[3]
    return reasons


def all_mutants():
    files = sorted(path for path in ROOT.glob("lib/*/*") if path.suffix in (".h", ".cpp"))
    return [mutant for file in files for mutant in mutants_of(str(file.relative_to(ROOT)), file.read_text())]


def choose(mutants, reasons, options):
    if options.only:
        mutants = [mutant for mutant in mutants if mutant.file.endswith(f"/{options.only}")]
    if options.survivors:
        mutants = [mutant for mutant in mutants if mutant.key in reasons]
    if options.places:
        # The order hardly changes when the library does.
        mutants = sorted(mutants, key=lambda mutant: hashlib.sha256(f"{options.seed} {mutant.key}".encode()).digest())
        mutants = mutants[: options.places]
    if not mutants:
        die("there is nothing to break")
    return mutants


def describe(mutant):
    source = (ROOT / mutant.file).read_text()
    broken = mutant.apply(source).split("\n")[mutant.line - 1 : mutant.line + mutant.replacement.count("\n")]
    where, change = mutant.key
    return f"{mutant.file}:{mutant.line}\n-{mutant.text}\n+{' '.join(line.strip() for line in broken)}\n\n" \
           f"{where}\n  {change}\n  because "


def report(verdicts, reasons):
    """Prints the figures, complains of what is wrong; whether all is well."""
    files = sorted({mutant.file for mutant in verdicts})
    totals = dict.fromkeys(("killed", "survived", "equivalent", "invalid"), 0)
    for file in files:
        counts = {verdict: sum(1 for mutant, (found, _) in verdicts.items() if mutant.file == file and found == verdict)
                  for verdict in totals}
        print(f"  {file}: " + ", ".join(f"{count} {verdict}" for verdict, count in counts.items()), file=sys.stderr)
        for verdict, count in counts.items():
            totals[verdict] += count

    good = True
    for mutant, (verdict, killer) in verdicts.items():
        if verdict == "survived" and mutant.key not in reasons:
            print(f"Lives without a reason: {describe(mutant)}", file=sys.stderr)
            good = False
        elif verdict == "equivalent":
            print(f"Equivalent: {mutant.file}:{mutant.line}: {mutant.key[1]}: {mutant.text}", file=sys.stderr)
        elif verdict != "survived" and mutant.key in reasons:
            print(f"In survivors.txt, but {verdict} {killer}: {': '.join(mutant.key)}", file=sys.stderr)
            good = False

    judged = totals["killed"] + totals["survived"]
    share = 100 * totals["killed"] / judged if judged else 0
    line = f"{totals['killed']} of {judged} mutants killed ({share:.1f} %), {totals['equivalent']} equivalent"
    if share < 95:
        print(f"FAILED: only {line}", file=sys.stderr)
        return False
    print(f"mutation: {line}")
    if good:
        print(f"mutation: {totals['survived']} live, each for a reason")
    return good


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--places", type=int, default=0,
                        help="so many mutants, chosen by the seed, of which those are not tried that survivors.txt "
                        "says live; 0 for all")
    parser.add_argument("--seed", default="1")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--survivors", action="store_true", help="only those that survivors.txt says live")
    parser.add_argument("--own", action="store_true", help="try the broken file's own tests alone: a quick look")
    parser.add_argument("--only", metavar="FILE", help="mutants of that file, such as GraphScene.cpp")
    options = parser.parse_args()

    mutants = all_mutants()
    reasons = read_survivors()
    unknown = reasons.keys() - {mutant.key for mutant in mutants}
    if unknown:
        die("survivors.txt speaks of what is not there:\n" + "\n".join(": ".join(key) for key in sorted(unknown)))
    chosen = choose(mutants, reasons, options)

    programs = {own_program(mutant.file) for mutant in chosen} if options.own else PROGRAMS
    judge = Judge(Tree(programs, options.jobs), options.jobs, options.own)
    verdicts = {}
    if options.places:
        verdicts = {mutant: ("survived", "as survivors.txt says") for mutant in chosen if mutant.key in reasons}
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        jobs = {pool.submit(judge.judge, mutant): mutant for mutant in chosen if mutant not in verdicts}
        for job in concurrent.futures.as_completed(jobs):
            mutant = jobs[job]
            verdicts[mutant] = job.result()
            print(f"[{len(verdicts)}/{len(chosen)}] {mutant.file}:{mutant.line}: {mutant.key[1]}: "
                  f"{' '.join(verdicts[mutant])[:100]}", file=sys.stderr, flush=True)
    in_order = {mutant: verdicts[mutant] for mutant in chosen}
    sys.exit(0 if report(in_order, reasons) else 1)


if __name__ == "__main__":
    main()
