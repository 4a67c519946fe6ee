"""Builds the test programs on a library with many mutants in it, and finds out which tests reach which of them."""

import dataclasses
import functools
import hashlib
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys

from schema import MUTANT_FILE, Schema

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]
WORK = ROOT / "build" / "mutation"

# The mutants that do not compile among others, so that this is not found out again.
REJECTED = WORK / "rejected"

# Mutants are not tried on tests of what deep and large graphs cost: they take long in a build that is not optimised.
NOT_TRIED = "GraphDepth.*"

# What they are made of, by folder of tests/.
PROGRAMS = {"foundation_tests": "foundation", "ks_graph_tests": "ks_graph", "model_tests": "model",
            "allocation_tests": "allocation"}
# The programs that are run once more, compiled to find what a mutant does to memory and what it does not give back.
SANITIZED = ("foundation_tests", "ks_graph_tests")

PRECOMPILED = "\n".join(f"#include <{header}>" for header in (
    "gmock/gmock.h", "gtest/gtest.h", "algorithm", "array", "cstdio", "map", "memory", "mutex", "optional", "set",
    "string", "unordered_map", "unordered_set", "vector")) + "\n"

# Warnings are of no interest here, but without a result there would be no saying what a mutant does. Copies of a
# function in one function make its frame large.
FLAGS = ["-std=c++20", "-w", "-Werror=return-type", "-ferror-limit=0", "-DKS_GRAPH_STATIC", f"-I{ROOT}/tests",
         "-DTEST_STACK_SIZE=0x10000000",
         f'-DTEST_DATA_DIR="{ROOT}/tests/data"', f'-DDOCS_DIR="{ROOT}/docs"', f'-DLIB_DIR="{ROOT}/lib"',
         f'-DEXPORTED_SYMBOLS="{ROOT}/tests/abi/exported_symbols.linux.txt"',
         f'-DKEPT_SEQUENCES_DIR="{ROOT}/tests/model/kept"']
UNOPTIMISED = [*FLAGS, "-O0", "-fpch-instantiate-templates", "-include-pch", f"{WORK}/precompiled.pch",
               "-include", f"{HERE}/mutation.h"]
SANITIZER = ["-fsanitize=address,undefined", "-fno-sanitize-recover=all"]
SANITIZED_FLAGS = [*FLAGS, "-O0", *SANITIZER, "-include", f"{HERE}/mutation.h"]
# The same for each run of tests, whether it is broken or not. Of the random sequences, a few: they are tried on mutants
# that most tests let live. Memory that is freed is overwritten.
ENVIRONMENT = {**os.environ, "MODEL_SEEDS": "8", "MUTATION_MEMORY": str(4 << 30), "MALLOC_PERTURB_": "165"}
LIBRARIES = ["-lgmock", "-lgtest", "-pthread"]


def run(command, **options):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, **options)


def die(text):
    print(f"FAILED: {text}", file=sys.stderr)
    sys.exit(1)


@functools.lru_cache(maxsize=None)
def hash_of(file):
    return hashlib.sha256((ROOT / file).read_bytes()).hexdigest()


def write_if_changed(path, text):
    """So that what is built from it is not built again without need."""
    if not path.exists() or path.read_text() != text:
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)


@dataclasses.dataclass(frozen=True)
class Test:
    program: str
    name: str
    seconds: float
    sites: frozenset


class Build:
    """`numbered` are pairs (number, mutant). Those that do not fit in with the others are left out of `sites`."""

    def __init__(self, numbered, jobs):
        self.numbered = numbered
        self.jobs = jobs
        self.library = sorted(path.relative_to(ROOT) for path in ROOT.glob("lib/*/*.cpp"))
        support = sorted(ROOT.glob("tests/support/*.cpp")) + [HERE / "mutation.cpp"]
        self.tests = {program: [path.relative_to(ROOT)
                                for path in sorted(ROOT.glob(f"tests/{folder}/*.cpp")) + support]
                      for program, folder in PROGRAMS.items()}
        self.linker = ["-fuse-ld=lld"] if shutil.which("ld.lld") else []
        self.rejected = set(REJECTED.read_text().splitlines()) if REJECTED.exists() else set()
        self.sites = {}
        self.write_ninja_file()
        self.compile_with_mutants()
        self.build(*(WORK / "record" / program for program in PROGRAMS))
        self.includers = self.read_includers()
        self.by_site = self.read_records()

    # The mutants that go into one program.

    def compile_with_mutants(self):
        while True:
            self.write_library()
            objects = [self.object_of(source) for source in self.library]
            built = self.ninja("-k", "0", *objects)
            if built.returncode == 0:
                built = self.ninja("-k", "0", *(self.object_of(source) for program in self.tests.values()
                                                for source in program))
            if built.returncode == 0:
                return
            rejected = self.who_fails(built.stdout)
            if not rejected:
                die(f"the library does not build:\n{built.stdout[-4000:]}")
            print(f"Left out, to be compiled by themselves: {len(rejected)} mutants", file=sys.stderr)
            self.rejected |= {self.identity(mutant) for number, mutant in self.numbered if number in rejected}
            REJECTED.write_text("\n".join(sorted(self.rejected)))

    @staticmethod
    def identity(mutant):
        return f"{hash_of(mutant.file)} {mutant.start} {mutant.end} {mutant.replacement!r}"

    def write_library(self):
        self.sites = {}
        next_site = 0
        for file in sorted(ROOT.glob("lib/*/*")):
            name, text = str(file.relative_to(ROOT)), file.read_text()
            own = [(number, mutant) for number, mutant in self.numbered
                   if mutant.file == name and self.identity(mutant) not in self.rejected]
            if own:
                schema = Schema(name, text, own, next_site)
                self.sites.update(schema.sites)
                next_site = schema.next_site
                text = schema.text
            write_if_changed(WORK / name, text)

    def who_fails(self, output):
        """The numbers of the mutants that the errors name, or else of all in the functions where they are."""
        named, functions = set(), set()
        in_error = False
        for line in output.splitlines():
            match = re.match(r"(\S+?):(\d+):\d+: (error|note|warning|fatal error): ", line)
            if not match:
                continue
            if match[3] != "note":
                in_error = True
                functions.add((match[1], int(match[2])))
            if in_error and (mutant := MUTANT_FILE.fullmatch(match[1])):
                named.add(int(mutant[1]))
                in_error = False
        return named or self.all_in(functions)

    def all_in(self, places):
        found = set()
        for file, line in places:
            schema_file = ROOT / file
            if schema_file.is_file():
                found |= Schema.numbers_around(file, schema_file.read_text(), self.numbered, line, self.sites)
        return found

    # Building.

    @staticmethod
    def object_of(source, sanitized=False):
        return WORK / ("sanitized" if sanitized else "objects") / source.with_suffix(".o")

    @staticmethod
    def source_of(source):
        return WORK / source if source.parts[0] == "lib" else ROOT / source

    def program_objects(self, program, sanitized=False):
        """The library in front: its inline functions are then those that all objects call."""
        foundation = self.tests["foundation_tests"]
        return [self.object_of(source, sanitized and (source in self.library or source in foundation))
                for source in self.library + self.tests[program]]

    def write_ninja_file(self):
        header = WORK / "precompiled.h"
        write_if_changed(header, PRECOMPILED)
        lines = []

        def rule(name, command, has_deps=True):
            lines.extend([f"rule {name}", f"  command = {command}"])
            if has_deps:
                lines.extend(["  deps = gcc", "  depfile = $out.d"])

        def build(output, how, inputs, order=""):
            lines.append(f"build {output}: {how} {' '.join(map(str, inputs))}{order}")

        library = f"-I{WORK}/lib"
        rule("header", f"clang++ {shlex.join(FLAGS)} -O0 -fpch-instantiate-templates -x c++-header $in -o $out "
             "-MD -MF $out.d")
        rule("compile", f"clang++ {shlex.join(UNOPTIMISED)} {library} -c $in -o $out -MMD -MF $out.d")
        rule("sanitize", f"clang++ {shlex.join(SANITIZED_FLAGS)} {library} -c $in -o $out -MMD -MF $out.d")
        link = f"clang++ {shlex.join(self.linker)} $in -o $out {shlex.join(LIBRARIES)}"
        rule("link", link, has_deps=False)
        rule("link_sanitized", f"{link} {shlex.join(SANITIZER)}", has_deps=False)
        rule("record", "cd $$(dirname $out) && MUTATION_RECORD=$out.new $in --gtest_brief=1 "
             f"--gtest_filter=-{NOT_TRIED} && mv $out.new $out",
             has_deps=False)
        build(WORK / "precompiled.pch", "header", [header])
        for source in sorted({*self.library, *(source for sources in self.tests.values() for source in sources)}):
            build(self.object_of(source), "compile", [self.source_of(source)], f" | {WORK}/precompiled.pch")
            if source in self.library or source in self.tests["foundation_tests"]:
                build(self.object_of(source, True), "sanitize", [self.source_of(source)])
        for program in PROGRAMS:
            build(WORK / program, "link", self.program_objects(program))
            build(WORK / "record" / program, "record", [WORK / program])
        for program in SANITIZED:
            build(WORK / f"{program}-sanitized", "link_sanitized", self.program_objects(program, True))
        write_if_changed(WORK / "build.ninja", "\n".join(lines) + "\n")

    def ninja(self, *arguments):
        return run(["ninja", "-C", WORK, "-j", str(self.jobs), *map(str, arguments)], env=ENVIRONMENT)

    def build(self, *targets):
        built = self.ninja(*targets)
        if built.returncode:
            die(f"{' '.join(target.name for target in targets)}:\n{built.stdout[-4000:]}")

    def build_sanitized(self):
        self.build(*(WORK / f"{program}-sanitized" for program in SANITIZED))

    def link(self, program, broken, folder):
        """With the objects {source: object} in place of the usual ones."""
        sources = self.library + self.tests[program]
        objects = [broken[source] for source in broken if source in sources]
        objects += [self.object_of(source) for source in sources if source not in broken]
        return run(["clang++", *self.linker, *objects, "-o", folder / program, *LIBRARIES]).returncode == 0

    # What is known when it is built.

    def read_includers(self):
        """{source or header: the sources that are compiled anew when it changes}"""
        includers = {}
        by_object = {str(self.object_of(source)): source
                     for sources in (self.library, *self.tests.values()) for source in sources}
        source = None
        for line in self.ninja("-t", "deps").stdout.splitlines():
            if line.startswith("    "):
                path = pathlib.Path(os.path.normpath(line.strip()))
                if source is not None and path.is_relative_to(WORK):
                    includers.setdefault(str(path.relative_to(WORK)), []).append(source)
            elif line:
                source = by_object.get(line.split(":")[0])
        return includers

    def read_records(self):
        """{site: the tests that reach it, the most specific first}"""
        by_site = {}
        for program in PROGRAMS:
            lines = (WORK / "record" / program).read_text().splitlines()
            at_startup = frozenset(lines[0].split()[2:])
            for line in lines[1:]:
                name, seconds, *sites = line.split()
                test = Test(program, name, float(seconds), frozenset(map(int, at_startup.union(sites))))
                for site in test.sites:
                    by_site.setdefault(site, []).append(test)
        for tests in by_site.values():
            tests.sort(key=lambda test: (len(test.sites), test.seconds))
        return by_site

    def all_tests(self):
        return sorted({test for tests in self.by_site.values() for test in tests}, key=lambda test: test.seconds)
