"""Puts many mutants of a source file into one text that compiles once: which of them runs is chosen by number when the
program starts; see mutation.h.

The body of a function with mutants becomes a `switch` over copies of the body, one for each mutant; a constant outside
of functions becomes a choice of two constants. Each such place is a site, which says when it is reached. What is
neither is not put in. Errors of the compiler in a mutant bear the mutant's number in place of the file's name.
"""

import bisect
import re

from mutants import Breaker

# Copies of it would each give another type if that is a lambda.
DEDUCED_RESULT = re.compile(r"\bauto\s+\w+\([^{};]*\)[^{};>]*\Z")

MUTANT_FILE = re.compile(r"mutant-(\d+)")


def mutant_file(number):
    return f"mutant-{number}"


class Schema:
    """Of one file. `numbered` are pairs (number, mutant); the sites are numbered on from `first_site`."""

    def __init__(self, name, source, numbered, first_site):
        self.name = name
        self.source = source
        self.sites = {}  # by number of the mutant
        self.next_site = first_site
        bodies = Breaker(source).function_bodies()
        in_bodies, outside = {}, []
        for number, mutant in numbered:
            after = bisect.bisect(bodies, (mutant.start, 0)) - 1
            if after >= 0 and mutant.end <= bodies[after][1]:
                if not DEDUCED_RESULT.search(source, 0, bodies[after][0]):
                    in_bodies.setdefault(bodies[after], []).append((number, mutant))
            elif mutant.is_constant and not self.in_constexpr_variable(mutant):
                outside.append((number, mutant))
        changes = [(*body, self.body(body, mutants)) for body, mutants in in_bodies.items()]
        changes += [(mutant.start, mutant.end, self.constant(number, mutant)) for number, mutant in outside]
        self.text = self.apply(changes)

    def in_constexpr_variable(self, mutant):
        """Its value is settled when compiled: there would be nothing to choose."""
        start = max(self.source.rfind(mark, 0, mutant.start) for mark in ";}")
        return re.search(r"\bconstexpr\b[^(]*=", self.source[start : mutant.start]) is not None

    def new_site(self, numbers):
        site = self.next_site
        self.next_site += 1
        self.sites.update(dict.fromkeys(numbers, site))
        return site

    def line_mark(self, offset, name=None):
        return f'\n#line {self.source.count(chr(10), 0, offset) + 1} "{name or self.name}"\n'

    def body(self, body, mutants):
        start, end = body
        site = self.new_site(number for number, _ in mutants)
        parts = [f"{{ switch (::mutation::chosenAt({site})) {{"]
        for number, mutant in mutants:
            broken = self.source[start : mutant.start] + mutant.replacement + self.source[mutant.end : end]
            parts.append(f"{self.line_mark(start)}case {number}: {self.line_mark(start, mutant_file(number))}"
                         f"{broken} break;")
        parts.append(f"{self.line_mark(start)}default: {self.source[start:end]} }} }}{self.line_mark(end)}")
        return "".join(parts)

    def constant(self, number, mutant):
        original = self.source[mutant.start : mutant.end]
        choice = f"(::mutation::chosenAt({self.new_site([number])}) == {number} ? {mutant.replacement} : {original})"
        return self.line_mark(mutant.start, mutant_file(number)) + choice + self.line_mark(mutant.end)

    def apply(self, changes):
        text, end = [f'#line 1 "{self.name}"\n'], 0
        for start, next_end, replacement in sorted(changes):
            text += [self.source[end:start], replacement]
            end = next_end
        return "".join([*text, self.source[end:]])

    @staticmethod
    def numbers_around(name, source, numbered, line, sites):
        """Of the mutants of a function that begins, has its body or ends at that line."""
        found = set()
        for start, end in Breaker(source).function_bodies():
            if source.count("\n", 0, start) <= line <= source.count("\n", 0, end) + 1:
                found |= {number for number, mutant in numbered
                          if mutant.file == name and number in sites and start < mutant.start < end}
        return found
