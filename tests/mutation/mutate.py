#!/usr/bin/env python3
"""Breaks the library on purpose, one small change at a time, and tells which changes the tests do not notice.

Many mutants are compiled into one program, which runs one of them; what does not go with others is compiled by itself.
Each is tried on the tests that reach it, the most specific first, until one fails, crashes, or uses far more time or
memory than it does otherwise: that kills the mutant. One that does not compile does not count, nor does one whose
object code, optimised, is that of the library: that one is equivalent. survivors.txt gives a reason for each mutant
that lives.

Everything is built in build/mutation of the checkout; what is broken are copies there. A verdict is kept there until
the broken file or the tests change, so that a run that was stopped goes on where it was.
"""

import argparse
import concurrent.futures
import contextlib
import hashlib
import json
import os
import queue
import re
import resource
import shutil
import signal
import subprocess
import sys
import threading

from builds import ENVIRONMENT, FLAGS, HERE, PROGRAMS, ROOT, SANITIZED, UNOPTIMISED, WORK, Build, die, hash_of, run
from mutants import mutants_of

SURVIVORS = HERE / "survivors.txt"

# A vector that both kinds of code use looks wrong to the one.
SANITIZER_OPTIONS = "detect_container_overflow=0:hard_rss_limit_mb=4096"
STACK = 64 << 20

# Of the tests that take long, those of random operations find most.
RANDOM = re.compile(r"Model\.Random|PlainNames\.Whatever|PinListsModel|SceneArrayOrder|RandomStory")

# Of all mutants; a few of them may be of those that live.
LEAST_SHARE = 95  # in a hundred

FEW_TESTS = 40
QUICK = 0.02  # seconds

STATIC_ASSERT = "error: static_assert failed"

STARTED = re.compile(r"\[ RUN      \] (\S+)")
FAILED = re.compile(r"\[  FAILED  \] ([^\s,]+)")


class Runner:
    """Runs tests in a folder of its own."""

    def __init__(self, folder):
        self.folder = folder

    def killer(self, file, tests, seconds, number=0):
        """The name of the test of the program `file` that fails; empty if it is not known which; None if all pass.
        The processor's time is limited, so that a busy machine kills nobody; who waits without end is found later."""
        names, output = self.folder / "tests", self.folder / "output"
        names.write_text("\n".join(tests))
        environment = {**ENVIRONMENT, "TMPDIR": str(self.folder), "TEST_TMPDIR": str(self.folder),
                       "MUTANT": str(number), "MUTATION_TESTS": str(names), "MUTATION_SECONDS": str(seconds),
                       "ASAN_OPTIONS": SANITIZER_OPTIONS}
        if file.name.endswith("-sanitized"):
            environment["MUTATION_MEMORY"] = "0"  # a sanitizer takes more addresses than there is memory
        with output.open("wb") as stream:
            process = subprocess.Popen([file, "--gtest_fail_fast"], cwd=self.folder, env=environment,
                                       stdin=subprocess.DEVNULL, stdout=stream, stderr=subprocess.DEVNULL,
                                       start_new_session=True)
            try:
                if process.wait(30 + 10 * seconds) == 0:
                    return None
            except subprocess.TimeoutExpired:
                pass
            finally:
                with contextlib.suppress(ProcessLookupError):
                    os.killpg(process.pid, signal.SIGKILL)
                process.wait()
        text = output.read_text(errors="replace")
        failed = FAILED.search(text)
        return failed[1] if failed else (STARTED.findall(text) or [""])[-1]


class Judge:
    def __init__(self, build, jobs, verdicts, quick_tests_only):
        self.built = build
        self.verdicts = verdicts
        self.quick_tests_only = quick_tests_only
        self.folders = queue.SimpleQueue()
        for number in range(jobs):
            folder = WORK / f"worker-{number}"
            shutil.rmtree(folder, ignore_errors=True)
            shutil.copytree(ROOT / "lib", folder / "lib")
            self.folders.put(folder)
        self.unbroken = {}
        self.lock = threading.Lock()
        self.is_sanitized_built = False

    def judge(self, number, mutant):
        """(verdict, by what): killed, survived, equivalent or invalid, which does not compile."""
        folder = self.folders.get()
        target = folder / mutant.file
        original = target.read_text()
        try:
            tests = self.built.by_site.get(self.built.sites.get(number))
            if tests:
                killer = self.find_killer(tests, folder, number, self.verdicts.last_killer(mutant))
                if killer is not None:
                    return "killed", killer
            if self.quick_tests_only:
                return "survived", "the quick tests"
            target.write_text(mutant.apply(original))
            if not tests:
                return self.judge_alone(mutant, folder)
            return ("equivalent" if self.is_equivalent(mutant, folder) else "survived"), ""
        finally:
            target.write_text(original)
            shutil.rmtree(folder / "objects", ignore_errors=True)
            self.folders.put(folder)

    # As one of many in a program.

    def check_unbroken(self, tests, suffix=""):
        """They have to pass the way they are run here, too."""
        folder = WORK / "unbroken"
        folder.mkdir(exist_ok=True)
        if killer := self.run_batches(self.batches(tests, None), WORK, folder, 0, suffix):
            die(f"the unbroken library does not pass {killer}{suffix}")

    def find_killer(self, tests, folder, number, last_killer):
        batches = self.batches(tests, last_killer)
        killer = self.run_batches(batches[:3] if self.quick_tests_only else batches, WORK, folder, number)
        if killer is not None or self.quick_tests_only:
            return killer
        self.build_sanitized()
        return self.run_batches([self.sanitized(tests)], WORK, folder, number, "-sanitized")

    @staticmethod
    def batches(tests, last_killer):
        """The one that killed it the last time, a few specific ones, the quick ones, random operations, the rest."""
        def batch_of(test):
            if test.name == last_killer:
                return 0
            if test.seconds <= QUICK:
                return 2
            return 3 if RANDOM.search(test.name) else 4

        batches = [[] for _ in range(5)]
        for test in tests:
            batches[batch_of(test)].append(test)
        batches[1], batches[2] = batches[2][:FEW_TESTS], batches[2][FEW_TESTS:]
        return batches

    @staticmethod
    def run_batches(batches, programs, folder, number=0, suffix=""):
        """The name of the test that kills, or None."""
        slower = 20 if suffix else 5
        for batch in batches:
            for program in PROGRAMS:
                tests = [test for test in batch if test.program == program]
                if not tests:
                    continue
                seconds = 1 + slower * sum(test.seconds for test in tests)
                names = [test.name for test in tests]
                killer = Runner(folder).killer(programs / f"{program}{suffix}", names, seconds, number)
                if killer is not None:
                    return killer or "startup"
        return None

    def build_sanitized(self):
        with self.lock:
            if not self.is_sanitized_built:
                self.built.build_sanitized()
                self.check_unbroken(self.sanitized(self.built.all_tests()), "-sanitized")
                self.is_sanitized_built = True

    @staticmethod
    def sanitized(tests):
        return [test for test in tests if test.program in SANITIZED and test.seconds <= QUICK]

    # By itself.

    def judge_alone(self, mutant, folder):
        """The objects of broken headers stand first in the link, so theirs are the inline functions that all objects
        call; so most are killed before all users are compiled."""
        users = self.built.includers.get(mutant.file, [])
        library = [source for source in users if source.parts[0] == "lib"]
        broken = {}
        for sources in (library, [source for source in users if source not in library]):
            if not sources:
                continue
            for source in sources:
                errors = self.compile(source, broken, folder)
                if errors and STATIC_ASSERT in errors:
                    return "killed", f"static_assert in {source}"
                if errors:
                    return "invalid", "compiler"
            for program in PROGRAMS:
                if not self.built.link(program, broken, folder):
                    return "invalid", "linker"
            killer = self.run_batches(self.batches(self.built.all_tests(), self.verdicts.last_killer(mutant)), folder,
                                      folder)
            if killer is not None:
                return "killed", killer
        return ("equivalent" if self.is_equivalent(mutant, folder) else "survived"), ""

    def compile(self, source, broken, folder):
        """What is wrong with it, or None."""
        broken[source] = folder / "objects" / source.with_suffix(".o")
        broken[source].parent.mkdir(parents=True, exist_ok=True)
        compiled = run(["clang++", *UNOPTIMISED, f"-I{folder}/lib", "-c", self.file_of(source, folder),
                        "-o", broken[source]])
        return compiled.stdout if compiled.returncode else None

    @staticmethod
    def file_of(source, tree):
        return (tree if source.parts[0] == "lib" else ROOT) / source

    def is_equivalent(self, mutant, folder):
        """A header's templates are those of the library and of the foundation's tests."""
        return all(self.optimised(source, folder, folder) == self.of_unbroken(source, folder)
                   for source in self.built.includers.get(mutant.file, [])
                   if source.parts[:2] in (("lib", "foundation"), ("lib", "ks_graph"), ("tests", "foundation")))

    def of_unbroken(self, source, folder):
        with self.lock:
            if source not in self.unbroken:
                self.unbroken[source] = self.optimised(source, ROOT, folder)
            return self.unbroken[source]

    def optimised(self, source, tree, folder):
        """The object code without the folder's name."""
        target = folder / "optimised.o"
        compiled = run(["clang++", *FLAGS, "-O1", f"-ffile-prefix-map={tree}=.", f"-I{tree}/lib",
                        "-c", self.file_of(source, tree), "-o", target])
        return hashlib.sha256(target.read_bytes()).digest() if compiled.returncode == 0 else None


class Verdicts:
    """Kept in a file, which is only appended to."""

    def __init__(self):
        self.path = WORK / "verdicts.jsonl"
        self.lock = threading.Lock()
        self.known = {}
        if self.path.exists():
            for line in self.path.read_text().splitlines():
                entry = json.loads(line)
                self.known[tuple(entry["mutant"])] = entry
        tests = hashlib.sha256()
        for file in sorted(path for folder in ("support", "data", *PROGRAMS.values())
                           for path in (ROOT / "tests" / folder).rglob("*") if path.is_file()):
            tests.update(file.read_bytes())
        self.tests = tests.hexdigest()

    def state(self, mutant):
        """What the verdict depends on."""
        return f"{hash_of(mutant.file)} {self.tests}"

    def of(self, mutant):
        entry = self.known.get(mutant.key)
        return (entry["verdict"], entry["killer"]) if entry and entry["state"] == self.state(mutant) else None

    def last_killer(self, mutant):
        return self.known.get(mutant.key, {}).get("killer")

    def add(self, mutant, verdict, killer):
        with self.lock, self.path.open("a") as file:
            self.known[mutant.key] = {"mutant": mutant.key, "state": self.state(mutant), "verdict": verdict,
                                      "killer": killer}
            file.write(json.dumps(self.known[mutant.key]) + "\n")


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


def report(verdicts, reasons, least_share):
    """Prints the figures, complains of what is wrong; whether all is well, and so many in a hundred are killed."""
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
    if share < least_share:
        print(f"FAILED: only {line}", file=sys.stderr)
        return False
    print(f"mutation: {line}")
    if good:
        print(f"mutation: {totals['survived']} live, each for a reason")
    return good


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--places", type=int, default=0,
                        help="so many mutants, chosen by the seed; 0 for all")
    parser.add_argument("--seed", default="1")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--survivors", action="store_true", help="those that survivors.txt says live, which are not tried otherwise")
    parser.add_argument("--quick", action="store_true",
                        help="a first look, of which nothing is kept but what is killed: only the quick tests, and "
                        "those by themselves not at all that do not go with others")
    parser.add_argument("--only", metavar="FILE", help="mutants of that file, such as GraphScene.cpp")
    options = parser.parse_args()

    mutants = all_mutants()
    reasons = read_survivors()
    unknown = reasons.keys() - {mutant.key for mutant in mutants}
    if unknown:
        die("survivors.txt speaks of what is not there:\n" + "\n".join(": ".join(key) for key in sorted(unknown)))
    chosen = choose(mutants, reasons, options)

    found = {}
    if not options.survivors:
        found = {mutant: ("survived", "as survivors.txt says") for mutant in chosen if mutant.key in reasons}
    WORK.mkdir(parents=True, exist_ok=True)
    verdicts = Verdicts()
    for mutant in chosen:
        if mutant not in found and (known := verdicts.of(mutant)):
            found[mutant] = known
    numbered = list(enumerate(mutants, 1))
    wanted = set(chosen) - found.keys()
    to_try = [(number, mutant) for number, mutant in numbered if mutant in wanted]
    if to_try:
        try_all(to_try, numbered, verdicts, found, options)
    least_share = LEAST_SHARE if len(chosen) == len(mutants) else 0
    sys.exit(0 if report({mutant: found[mutant] for mutant in chosen}, reasons, least_share) else 1)


def try_all(to_try, all_numbered, verdicts, found, options):
    # Recursion goes deep in some tests, and the frames are large.
    _, most = resource.getrlimit(resource.RLIMIT_STACK)
    resource.setrlimit(resource.RLIMIT_STACK, (STACK if most == resource.RLIM_INFINITY else min(STACK, most), most))
    judge = Judge(Build(all_numbered, options.jobs), options.jobs, verdicts, options.quick)
    judge.check_unbroken([test for test in judge.built.all_tests() if test.seconds <= QUICK])
    total = len(found) + len(to_try)
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        running = {pool.submit(judge.judge, number, mutant): mutant for number, mutant in to_try}
        for job in concurrent.futures.as_completed(running):
            mutant = running[job]
            found[mutant] = job.result()
            if found[mutant][0] == "killed" or not options.quick:
                verdicts.add(mutant, *found[mutant])
            print(f"[{len(found)}/{total}] {mutant.file}:{mutant.line}: {mutant.key[1]}: "
                  f"{' '.join(found[mutant])[:100]}", file=sys.stderr, flush=True)


if __name__ == "__main__":
    main()
