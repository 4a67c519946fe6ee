"""The ways to break a C++ source file on purpose: each is a `Mutant`, one small change of its text."""

import collections
import dataclasses
import re

TOKEN = re.compile(
    r"""
      (?P<skip>//[^\n]*|/\*.*?\*/|(?m:^)[ \t]*\#(?:\\\n|[^\n])*)
    | (?P<raw>R"(?P<delimiter>[^(\s]*)\(.*?\)(?P=delimiter)")
    | (?P<string>"(?:\\.|[^"\\\n])*"|'(?:\\.|[^'\\\n])*')
    | (?P<number>(?:0[xX][0-9a-fA-F]+|\d[\d']*(?:\.\d*)?(?:[eE][+-]?\d+)?)[a-zA-Z]*)
    | (?P<word>[A-Za-z_]\w*)
    | (?P<sign><=>|<<=|>>=|->\*|\.\.\.|::|\+\+|--|->|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|[^\w\s])
    """,
    re.VERBOSE | re.DOTALL,
)

# clang-format puts blanks around a binary operator only: `a < b` compares, `Array<T>` and `T&& t` do not.
BINARY = {
    "<": ("<=", ">="),
    "<=": ("<", ">"),
    ">": (">=", "<="),
    ">=": (">", "<"),
    "==": ("!=",),
    "!=": ("==",),
    "&&": ("||",),
    "||": ("&&",),
    "+": ("-",),
    "-": ("+",),
    "*": ("/",),
    "/": ("*",),
    "%": ("*",),
    "&": ("|",),
    "|": ("&",),
    "^": ("&",),
    "<<": (">>",),
    ">>": ("<<",),
    "+=": ("-=",),
    "-=": ("+=",),
    "*=": ("/=",),
    "/=": ("*=",),
    "|=": ("&=",),
    "&=": ("|=",),
}
UNARY = {"++": "--", "--": "++"}
WORDS = {"true": "false", "false": "true"}

OPENING = {"(": ")", "[": "]", "{": "}"}
COMPARING = {"<", "<=", ">", ">=", "==", "!=", "?", "!"}
UNTOUCHED_CALLS = {"static_assert", "assert", "noexcept", "alignas", "decltype", "sizeof", "requires",
                   "KS_PRINTF_LIKE"}
NO_STATEMENT = {"case", "default", "using", "typedef", "static_assert", "assert", "struct", "class", "enum"}
BEFORE_CONDITION = {"=", "return", "(", "{", "[", ",", ";", "?", ":", "+=", "-="}


@dataclasses.dataclass(frozen=True)
class Mutant:
    file: str
    start: int
    end: int
    replacement: str
    line: int
    # These three tell it from all others of the file, and outlive edits of other lines.
    text: str
    change: str
    place: str
    is_constant: bool

    @property
    def key(self):
        return f"{self.file}: {self.text}", f"{self.change}{self.place}"

    def apply(self, source):
        return source[: self.start] + self.replacement + source[self.end :]


@dataclasses.dataclass
class Token:
    kind: str
    text: str
    start: int
    end: int


def tokens_of(source):
    tokens = []
    for match in TOKEN.finditer(source):
        if match.lastgroup != "skip":
            tokens.append(Token(match.lastgroup, match[0], match.start(), match.end()))
    return tokens


def plus_one(number):
    """The constant that stands for another one; None when the number is not of a known form."""
    match = re.fullmatch(r"(0[xX][0-9a-fA-F]+|[\d']+(?:\.\d*)?)([fFuUlL]*)", number)
    if not match:
        return None
    digits, suffix = match[1].replace("'", ""), match[2]
    if digits.lower().startswith("0x"):
        return f"0x{int(digits, 16) - 1:X}{suffix}"
    if "." in digits:
        return f"{0.0 if float(digits) == 1 else float(digits) + 1}{suffix}"
    return f"{0 if int(digits) == 1 else int(digits) + 1}{suffix}"


class Breaker:
    def __init__(self, source):
        self.source = source
        self.tokens = tokens_of(source)
        self.partner = self.match_brackets()
        self.in_bool_function = False
        self.found = []  # (start, end, replacement, change)

    def match_brackets(self):
        partner, open_ones = {}, []
        for i, token in enumerate(self.tokens):
            if token.text in OPENING and token.kind == "sign":
                open_ones.append(i)
            elif token.text in OPENING.values() and token.kind == "sign" and open_ones:
                partner[open_ones.pop()] = i
        partner.update({closing: opening for opening, closing in partner.items()})
        return partner

    def text(self, i):
        return self.tokens[i].text if 0 <= i < len(self.tokens) else ""

    def add(self, start, end, replacement, change):
        self.found.append((start, end, replacement, change))

    def negate(self, first, last, what):
        """The tokens first to last, as a condition. A single comparison is broken by its operator."""
        top = [self.text(j) for j in self.top_level(first, last)]
        if any(text in COMPARING for text in top) and not any(text in ("&&", "||") for text in top):
            return
        start, end = self.tokens[first].start, self.tokens[last].end
        self.add(start, end, f"!({self.source[start:end]})", f"negate {what}")

    def top_level(self, first, last):
        """The indices of the tokens first to last that stand in no brackets opened in between."""
        i = first
        while i <= last:
            yield i
            i = self.partner.get(i, i) + 1 if self.text(i) in OPENING else i + 1

    # Operators, constants: anywhere.

    def untouched(self):
        """The indices of tokens that are no code to break."""
        indices = set()
        for i, token in enumerate(self.tokens):
            if token.text in UNTOUCHED_CALLS and self.text(i + 1) == "(":
                indices.update(range(i, self.partner[i + 1] + 1))
            elif token.text == "template" and self.text(i + 1) == "<":
                depth, last = 0, i + 1
                while True:
                    depth += self.text(last).count("<") - self.text(last).count(">")
                    if depth == 0:
                        break
                    last += 1
                indices.update(range(i, last + 1))
            elif token.text in ("__declspec", "__attribute__"):
                indices.update(range(i, self.partner[i + 1] + 1))
            elif token.text == "operator":
                indices.update((i + 1, i + 2))
            elif token.text == "0" and self.text(i - 1) == "=" and self.text(i - 2) in (")", "const", "noexcept"):
                indices.add(i)  # a pure virtual function
        return indices

    def break_tokens(self):
        untouched = self.untouched()
        for i, token in enumerate(self.tokens):
            if i not in untouched:
                self.break_token(i, token)

    def break_token(self, i, token):
        def replace(new):
            self.add(token.start, token.end, new, f"`{token.text}` becomes `{new}`")

        if token.kind == "number":
            if (new := plus_one(token.text)) is not None:
                replace(new)
        elif token.text in WORDS:
            replace(WORDS[token.text])
        elif token.text in UNARY:
            replace(UNARY[token.text])
        elif token.text == "!":
            self.add(token.start, token.end, "", "`!` goes")
        elif token.text == "?":
            self.break_choice(i)
        elif token.text in BINARY and self.has_blanks_around(token):
            for new in BINARY[token.text]:
                replace(new)

    def has_blanks_around(self, token):
        return self.source[token.start - 1].isspace() and self.source[token.end].isspace()

    def break_choice(self, question_mark):
        first = question_mark
        while first > 0 and self.text(first - 1) not in BEFORE_CONDITION:
            first -= 1
            if self.text(first) in OPENING.values():
                first = self.partner[first]
        if first < question_mark:
            self.negate(first, question_mark - 1, "the choice")

    # Statements: in the bodies of functions.

    def is_body(self, brace):
        before = self.text(brace - 1)
        if before in (")", "const", "noexcept", "override", "final", "mutable", "else", "do", "try"):
            return True
        if before == "]":
            return self.text(self.partner[brace - 1] - 1) not in ("=", ")") or self.text(brace - 2) != "]"
        for i in range(brace - 1, max(brace - 16, 0), -1):
            if self.text(i) in (";", "{", "}", "(", ")", "="):
                return False
            if self.text(i) == "->":
                return self.text(i - 1) in (")", "mutable", "noexcept")
        return False

    def gives_bool(self, brace):
        """Whether the function of that body may; of a lambda that does not say it is not known."""
        i = brace
        while i > 0 and self.text(i - 1) not in (";", "{", "}"):
            i -= 1
            if self.text(i) == "]" or self.text(i) == "bool" and self.text(i + 1) != "const":
                return True
            if self.text(i) in (")", "]"):
                i = self.partner[i]
        return False

    def outermost_bodies(self, first, last):
        """The opening braces."""
        i = first
        while i <= last:
            if self.text(i) == "{" and self.is_body(i):
                yield i
                i = self.partner[i]
            i += 1

    def break_bodies(self, first, last):
        for brace in self.outermost_bodies(first, last):
            self.break_body(brace)

    def function_bodies(self):
        """Where each starts and ends in the text, with its braces."""
        return [(self.tokens[brace].start, self.tokens[self.partner[brace]].end)
                for brace in self.outermost_bodies(0, len(self.tokens) - 1)]

    def break_body(self, brace):
        outer = self.in_bool_function
        self.in_bool_function = self.gives_bool(brace)
        self.break_block(brace + 1, self.partner[brace] - 1)
        self.in_bool_function = outer

    def break_block(self, first, last):
        i = first
        while i <= last:
            i = self.break_statement(i, last) + 1

    def break_statement(self, i, last):
        """Returns the last token of the statement that begins at i, as far as it is known here."""
        text = self.text(i)
        if text in (";", "else", "do", "try"):
            return i
        if text == "{":
            self.break_block(i + 1, self.partner[i] - 1)
            return self.partner[i]
        if text in ("if", "while", "for", "switch", "catch"):
            return self.break_control(i)
        end = next((j for j in self.top_level(i, last) if self.text(j) == ";"), last)
        self.break_bodies(i, end)
        if text == "return":
            self.break_return(i, end)
        if text not in NO_STATEMENT and not self.declares_what_is_needed(i, end) and not self.ends_function(i, end):
            removed = self.source[self.tokens[i].start : self.tokens[end].start]
            self.add(self.tokens[i].start, self.tokens[end].start, "\n" * removed.count("\n"),
                     "the statement goes")
        return end

    def break_control(self, i):
        opening = i + 2 if self.text(i + 1) == "constexpr" else i + 1
        closing = self.partner[opening]
        self.break_bodies(opening + 1, closing - 1)
        parts, first = [], opening + 1
        for j in self.top_level(opening + 1, closing - 1):
            if self.text(j) == ";":
                parts.append((first, j - 1))
                first = j + 1
        parts.append((first, closing - 1))
        if self.text(i) in ("if", "while"):
            self.negate_unless_declaration(*parts[-1])
        elif self.text(i) == "for" and len(parts) == 3:
            self.negate_unless_declaration(*parts[1])
        return closing

    def negate_unless_declaration(self, first, last):
        if first <= last and not any(self.text(j) == "=" for j in self.top_level(first, last)):
            self.negate(first, last, "the condition")

    def break_return(self, i, end):
        first, last = i + 1, end - 1
        if self.in_bool_function and first <= last and self.text(first) not in ("{", "true", "false", "nullptr", "*"):
            self.negate(first, last, "the result")

    def ends_function(self, i, end):
        """A last return: a function would not compile without its result."""
        closing = end + 1
        return (self.text(i) == "return" and self.text(closing) == "}" and self.is_body(self.partner[closing])
                and self.text(i - 1) in ("{", "}", ";"))

    def declares_what_is_needed(self, first, end):
        """Without such a declaration what follows would not compile. A lock or a guard is not named again."""
        previous = None
        for j in self.top_level(first, end):
            token = self.tokens[j]
            if (previous is not None and token.kind == "word" and self.text(j + 1) in ("=", "(", "{", ";", "[", ":")
                    and (previous.kind == "word" and previous.text not in ("return", "delete", "throw", "new")
                         or previous.text in ("*", "&", "&&", ">", "]"))):
                later = self.tokens[end : end + 2000]
                return any(other.text == token.text for other in later)
            previous = token
        return False


def mutants_of(file, source):
    """All mutants of a file, in the order of its text."""
    breaker = Breaker(source)
    breaker.break_tokens()
    breaker.break_bodies(0, len(breaker.tokens) - 1)

    lines = [line.strip() for line in source.split("\n")]
    seen = collections.Counter()
    mutants = []
    for start, end, replacement, change in sorted(set(breaker.found)):
        line = source.count("\n", 0, start) + 1
        text = lines[line - 1]
        seen[text, change] += 1
        place = f" ({seen[text, change]})" if seen[text, change] > 1 else ""
        is_constant = re.fullmatch(r"true|false|\d[\w.']*", source[start:end]) is not None
        mutants.append(Mutant(file, start, end, replacement, line, text, change, place, is_constant))
    return mutants
