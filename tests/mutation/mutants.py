# SPDX-License-Identifier: MIT
"""The mutants of a C++ source in the house format: small changes that a good test must notice.

Works on the tokens of the text, not on a parse tree: the house format marks a binary operator (blanks on
both sides) from a template's bracket, a reference or a sign. What it takes wrongly does not compile, and
what does not compile does not count.
"""
import collections
import re

# edits: (start, end, replacement) in the text, in ascending order.
# guard: None, or (start, end, before, after): what put around the place makes the change one that can be
# switched on while the program runs, so that many mutants share a program. NUMBER stands for its number.
Mutant = collections.namedtuple("Mutant", "kind edits guard", defaults=[None])
Token = collections.namedtuple("Token", "kind text start end")

TOKEN = re.compile(r"""
    (?P<space>\s+|//[^\n]*|/\*.*?\*/)
  | (?P<directive>(?<![^\n])[ \t]*\#(?:[^\n\\]|\\.)*)
  | (?P<text>R"(?P<mark>[^(\s]*)\(.*?\)(?P=mark)"|"(?:[^"\\\n]|\\.)*")
  | (?P<char>'(?:[^'\\\n]|\\.[0-9a-f]*)')
  | (?P<number>\.?[0-9](?:'?[0-9a-zA-Z_.]|(?<=[eEpP])[+-])*)
  | (?P<name>[A-Za-z_]\w*)
  | (?P<operator><<=|>>=|<=>|->\*|\.\.\.|::|->|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|.)
""", re.VERBOSE | re.DOTALL)

CLOSER = {"(": ")", "[": "]", "{": "}"}
BINARY = {
    "==": ["!="], "!=": ["=="], "<": ["<="], "<=": ["<"], ">": [">="], ">=": [">"],
    "&&": ["||"], "||": ["&&"], "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["*"],
    "<<": [">>"], ">>": ["<<"], "&": ["|"], "|": ["&"], "^": ["&"],
    "+=": ["-=", "="], "-=": ["+=", "="], "*=": ["/="], "|=": ["&=", "="], "&=": ["|=", "="],
}
# The operators of tests/mutation/active_mutant.h.
SWITCHED = {"==": "Equal", "!=": "NotEqual", "<": "Less", "<=": "LessEqual", ">": "Greater",
            ">=": "GreaterEqual", "+": "Plus", "-": "Minus", "*": "Times", "/": "Divided", "&": "And",
            "|": "Or", "<<": "ShiftedLeft", ">>": "ShiftedRight"}
# What begins a statement that is no expression. Without its "return" a function may have no result.
DECLARING = {"const", "constexpr", "static", "auto", "return", "throw"}
ACTIVE = "zarn_mutation::isActive(NUMBER)"
EMPTY_RESULTS = {"false", "0", "{}", '""', "nullptr", "std::nullopt"}


def tokens_of(source):
    """The tokens that mean something: no white space, comments or directives."""
    found = []
    for match in TOKEN.finditer(source):
        if match.lastgroup not in ("space", "directive"):
            kind = "text" if match.lastgroup == "mark" else match.lastgroup
            found.append(Token(kind, match.group(), match.start(), match.end()))
    return found


def apply(source, mutant):
    for start, end, replacement in reversed(mutant.edits):
        source = source[:start] + replacement + source[end:]
    return source


def with_guards(source, numbered):
    """The source with the guards of some mutants, (number, mutant), in it. A line directive in front of
    each lets the compiler's complaints name it."""
    openers, closers = collections.defaultdict(str), collections.defaultdict(str)
    for number, mutant in sorted(numbered, key=lambda item: (item[1].guard[0], -item[1].guard[1])):
        start, end, before, after = mutant.guard
        openers[start] += f'\n#line {number}000 "guard"\n' + before.replace("NUMBER", str(number))
        closers[end] = after + closers[end]
    pieces, done = [], 0
    for place in sorted({*openers, *closers}):
        pieces += [source[done:place], closers[place], openers[place]]
        done = place
    return "".join(pieces) + source[done:]


def mutants_of(source):
    """All mutants of a source in the order of their places, none twice."""
    found = _Finder(source).find()
    unique = {source: None}
    for mutant in found:
        unique.setdefault(apply(source, mutant), mutant)
    del unique[source]
    return sorted(unique.values(), key=lambda mutant: mutant.edits[0][:2])


class _Finder:
    def __init__(self, source):
        self.source = source
        self.tokens = tokens_of(source)
        self.partner = self._brackets()
        self.found = []

    def find(self):
        for at, token in enumerate(self.tokens):
            if token.kind == "number":
                self._number(token)
            elif token.kind == "char":
                self._character(token)
            elif token.kind == "text":
                self._text(at, token)
            elif token.text in ("true", "false"):
                self._replace_value("constant", token, "false" if token.text == "true" else "true")
            elif token.kind == "operator":
                self._operator(at, token)
        self._declarations(0, len(self.tokens))
        return self.found

    def _brackets(self):
        partner, open_ones = {}, []
        for at, token in enumerate(self.tokens):
            if token.text in CLOSER:
                open_ones.append(at)
            elif token.text in CLOSER.values():
                begin = open_ones.pop()
                partner[begin], partner[at] = at, begin
        return partner

    def _text_between(self, first, last):
        """The source from token `first` up to, not including, token `last`."""
        return self.source[self.tokens[first].start:self.tokens[last - 1].end]

    def _add(self, kind, *edits, guard=None):
        self.found.append(Mutant(kind, tuple(edits), guard))

    def _replace(self, kind, token, text, guard=None):
        self._add(kind, (token.start, token.end, text), guard=guard)

    def _replace_value(self, kind, token, text):
        self._replace(kind, token, text, (token.start, token.end, f"({ACTIVE} ? {text} : ", ")"))

    def _replace_truth(self, kind, start, end, value):
        before = f"({ACTIVE} || (" if value == "true" else f"(!{ACTIVE} && ("
        self._add(kind, (start, end, value), guard=(start, end, before, "))"))

    # Constants and texts.

    def _number(self, token):
        digits, suffix = re.fullmatch(r"(.*?)([uUlL]*)", token.text).groups()
        if re.search(r"\.|^[0-9]+e", digits):
            value = float(digits)
            for other in (value * 2, value / 2) if value else (1.0,):
                self._replace_value("constant", token, repr(other))
            return
        value = int(digits.replace("'", ""), 16 if digits.lower().startswith("0x") else 10)
        for other in (value + 1, value - 1) if value else (1,):
            self._replace_value("constant", token,
                                (hex(other) if digits.lower().startswith("0x") else str(other)) + suffix)

    def _character(self, token):
        code = {r"\t": 9, r"\n": 10, r"\v": 11, r"\f": 12, r"\r": 13, r"\0": 0, r"\'": 39, r"\\": 92,
                r"\"": 34}.get(token.text[1:-1])
        code = ord(token.text[1:-1]) if code is None else code
        for other in (code + 1, code - 1):
            if other >= 0:
                self._replace_value("constant", token, r"'\x%02x'" % other)

    def _text(self, at, token):
        if at and self.tokens[at - 1].text in ("extern", "static_assert"):
            return
        begin, end = re.fullmatch(r'(R"[^(]*\(|").*(\)[^(]*"|")', token.text, re.DOTALL).groups()
        body = token.text[len(begin):-len(end)]
        pieces = re.findall(r"\\(?:u[0-9a-fA-F]{4}|x[0-9a-fA-F]+|.)|.", body, re.DOTALL) \
            if begin == '"' else list(body)
        # Pieces of one text must stay next to each other.
        is_piece = "text" in (self.tokens[at - 1].kind, self.tokens[at + 1].kind)
        replace = self._replace if is_piece else self._replace_value
        if not pieces:
            replace("text", token, begin + "x" + end)
            return
        # A text without letters is a set of characters: each one matters by itself.
        is_set = len(pieces) > 2 and not re.search(r"[A-Za-z0-9 ]", re.sub(r"\\.", "", body))
        for drop in range(len(pieces)) if is_set else {0, len(pieces) - 1}:
            replace("text", token, begin + "".join(pieces[:drop] + pieces[drop + 1:]) + end)

    # Operators.

    def _operator(self, at, token):
        before, after = self.source[token.start - 1:token.start], self.source[token.end:token.end + 1]
        if token.text in ("&&", "||") and before.isspace() and after.isspace():
            self._operand(at, -1)
            self._operand(at, 1)
        if token.text in BINARY and before.isspace() and after.isspace():
            tag = SWITCHED.get(token.text)
            guard = (token.start, token.end, f"{token.text} zarn_mutation::{tag}{{NUMBER}} ", "")
            for other in BINARY[token.text]:
                self._replace("operator", token, other, guard if tag else None)
        elif token.text == "!":
            self._replace("operator", token, "", (token.start, token.end, f"{ACTIVE} != ", ""))
        elif token.text == "~" or (token.text == "-" and not after.isspace()):
            self._replace("operator", token, "")
        elif token.text in ("++", "--"):
            self._replace("operator", token, "--" if token.text == "++" else "++")
        elif token.text == "?" and before.isspace():
            self._choice(at)

    def _extent(self, at, step, ends):
        """The last token, going by `step` from `at`, before one of `ends` or the bracket around."""
        here = at
        while 0 <= here + step < len(self.tokens):
            text = self.tokens[here + step].text
            if text in ends or text in (CLOSER.values() if step > 0 else CLOSER):
                return here
            here += step
            here = self.partner.get(here, here)
        return here

    def _operand(self, at, step):
        ends = {"&&", "||", "?", ":", ",", ";", "=", "return"}
        first, last = sorted((at + step, self._extent(at, step, ends)))
        neutral = "true" if self.tokens[at].text == "&&" else "false"
        self._replace_truth("operand", self.tokens[first].start, self.tokens[last].end, neutral)

    def _choice(self, at):
        first = self._extent(at, -1, {"=", "+=", ",", ";", "return", "?", ":"})
        for value in ("false", "true"):
            self._replace_truth("choice", self.tokens[first].start, self.tokens[at - 1].end, value)

    # Statements.

    def _declarations(self, at, end):
        """Looks for the bodies of functions among declarations."""
        while at < end:
            if self.tokens[at].text == "{":
                if self._opens_block(at):
                    self._block(at)
                    at = self.partner[at]
                elif not self._opens_scope(at):
                    at = self.partner[at]
            at += 1

    def _opens_block(self, at):
        return self.tokens[at - 1].text in (")", "]", "const", "override", "noexcept", "mutable")

    def _opens_scope(self, at):
        begin = self._extent(at, -1, {";", "}"})
        return any(token.text in ("namespace", "class", "struct") for token in self.tokens[begin:at])

    def _block(self, at):
        statements, here = [], at + 1
        while here < self.partner[at]:
            first = here
            here, is_simple = self._statement(here)
            statements.append((first, here, is_simple))
        for one, other in zip(statements, statements[1:]):
            if one[2] and other[2]:
                self._swap(one, other)

    def _statement(self, at, is_whole_body=False):
        """The token after the statement, and whether it is a simple one that may change its place."""
        text = self.tokens[at].text
        if text == "{":
            self._block(at)
            return self.partner[at] + 1, False
        if text in ("if", "while", "for", "switch"):
            return self._controlled(at), False
        if text in ("else", "do"):
            return self._statement(at + 1)[0], False
        if text in ("case", "default"):
            return self._extent(at, 1, {":"}) + 2, False
        return self._simple(at, is_whole_body)

    def _controlled(self, at):
        begin = at + 1 + (self.tokens[at + 1].text == "constexpr")
        end = self.partner[begin]
        self._bodies_in(begin, end)
        self._condition(at, begin, end)
        # Without the only statement of its body an "if" does what its condition "false" does.
        after = self._statement(end + 1, is_whole_body=self.tokens[at].text == "if")[0]
        if after < len(self.tokens) and self.tokens[after].text == "else":
            after = self._statement(after)[0]
        return after

    def _condition(self, at, begin, end):
        first, text = begin + 1, self.tokens[at].text
        semicolons = [here for here in range(begin, end)
                      if self.tokens[here].text == ";" and self._extent(here, -1, set()) == first]
        if text == "for" and not semicolons:
            self._add("statement", (self.tokens[at].start, self.tokens[at].start, "if (false) "))
            return
        if text == "switch":
            return
        last = end
        if text == "for":
            first, last = semicolons[0] + 1, semicolons[1]
        elif semicolons:
            first = semicolons[-1] + 1
        elif any(self.tokens[here].text == "=" for here in range(first, end)):
            first = end
        if first == last and text == "for":
            return
        for value in ("false", "true") if text == "if" else ("false",):
            if first == last:
                self._add("condition", (self.tokens[end].start, self.tokens[end].start, "; " + value))
            else:
                self._replace_truth(
                    "condition", self.tokens[first].start, self.tokens[last - 1].end, value)

    def _simple(self, at, is_whole_body):
        end = self._extent(at, 1, {";"}) + 1
        self._bodies_in(at, end)
        first = self.tokens[at]
        if first.text in ("using", "static_assert", ";"):
            return end + 1, False
        place = (first.start, self.tokens[end].end)
        if not is_whole_body:
            declares = first.text in DECLARING or re.match(r"[\w:]+(<.*>)?[&*]* [\w\[]",
                                                           self._text_between(at, end), re.DOTALL)
            self._add("statement", (*place, ";"),
                      guard=None if declares else (*place, f"{{ if (!{ACTIVE}) {{ ", " } }"))
        if first.text == "return" and end > at + 1 \
                and self._text_between(at + 1, end) not in EMPTY_RESULTS:
            self._add("result", (self.tokens[at + 1].start, self.tokens[end - 1].end, "{}"),
                      guard=(*place, f"{{ if ({ACTIVE}) return {{}}; ", " }"))
        return end + 1, first.text not in ("return", "break", "continue")

    def _bodies_in(self, at, end):
        """The bodies of lambdas in an expression."""
        while at < end:
            if self.tokens[at].text == "{" and self._opens_block(at):
                self._block(at)
                at = self.partner[at]
            at += 1

    def _swap(self, one, other):
        if any("(" not in [token.text for token in self.tokens[first:end]] for first, end, _ in (one, other)):
            return
        # Independent by construction: the same is done to one object after another.
        (receiver, method), (other_receiver, other_method) = (
            re.match(r"([\w.&]*?)(?:(?:\.|->)(\w+))?\(|", self._text_between(first, end)).groups("")
            for first, end, _ in (one, other))
        if method and method == other_method and receiver != other_receiver:
            return
        places = [(self.tokens[first].start, self.tokens[end - 1].end) for first, end, _ in (one, other)]
        texts = [self.source[start:end] for start, end in places]
        self._add("order", (*places[0], texts[1]), (*places[1], texts[0]))
