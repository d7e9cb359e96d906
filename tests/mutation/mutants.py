# SPDX-License-Identifier: MIT
"""The mutants of a C++ source in the house format: small changes that a good test must notice.

Works on the tokens of the text, not on a parse tree: the house format tells a binary operator (blanks on
both sides) from a template's bracket, a reference or a sign. What it takes wrongly does not compile, and
what does not compile does not count.
"""
import collections
import re

# edits: (start, end, replacement) in the text, in ascending order.
Mutant = collections.namedtuple("Mutant", "kind edits")
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
                self._replace("constant", token, "false" if token.text == "true" else "true")
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

    def _add(self, kind, *edits):
        self.found.append(Mutant(kind, tuple(edits)))

    def _replace(self, kind, token, text):
        self._add(kind, (token.start, token.end, text))

    # Constants and texts.

    def _number(self, token):
        digits, suffix = re.fullmatch(r"(.*?)([uUlL]*)", token.text).groups()
        if re.search(r"\.|^[0-9]+e", digits):
            value = float(digits)
            for other in (value * 2, value / 2) if value else (1.0,):
                self._replace("constant", token, repr(other))
            return
        value = int(digits.replace("'", ""), 16 if digits.lower().startswith("0x") else 10)
        for other in (value + 1, value - 1) if value else (1,):
            self._replace("constant", token,
                          (hex(other) if digits.lower().startswith("0x") else str(other)) + suffix)

    def _character(self, token):
        code = {r"\t": 9, r"\n": 10, r"\v": 11, r"\f": 12, r"\r": 13, r"\0": 0, r"\'": 39, r"\\": 92,
                r"\"": 34}.get(token.text[1:-1])
        code = ord(token.text[1:-1]) if code is None else code
        for other in (code + 1, code - 1):
            if other >= 0:
                self._replace("constant", token, r"'\x%02x'" % other)

    def _text(self, at, token):
        if at and self.tokens[at - 1].text in ("extern", "static_assert"):
            return
        begin, end = re.fullmatch(r'(R"[^(]*\(|").*(\)[^(]*"|")', token.text, re.DOTALL).groups()
        body = token.text[len(begin):-len(end)]
        pieces = re.findall(r"\\(?:u[0-9a-fA-F]{4}|x[0-9a-fA-F]+|.)|.", body, re.DOTALL) \
            if begin == '"' else list(body)
        if not pieces:
            self._replace("text", token, begin + "x" + end)
            return
        # A text without letters is a set of characters: each one matters by itself.
        is_set = len(pieces) > 2 and not re.search(r"[A-Za-z0-9 ]", re.sub(r"\\.", "", body))
        for drop in range(len(pieces)) if is_set else {0, len(pieces) - 1}:
            self._replace("text", token, begin + "".join(pieces[:drop] + pieces[drop + 1:]) + end)

    # Operators.

    def _operator(self, at, token):
        before, after = self.source[token.start - 1:token.start], self.source[token.end:token.end + 1]
        if token.text in ("&&", "||") and before.isspace() and after.isspace():
            self._operand(at, -1)
            self._operand(at, 1)
        if token.text in BINARY and before.isspace() and after.isspace():
            for other in BINARY[token.text]:
                self._replace("operator", token, other)
        elif token.text in ("!", "~") or (token.text == "-" and not after.isspace()):
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
        self._add("operand", (self.tokens[first].start, self.tokens[last].end, neutral))

    def _choice(self, at):
        colon = self._extent(at, 1, {":"}) + 1
        end = self._extent(colon, 1, {",", ";"}) + 1
        yes, no = self._text_between(at + 1, colon), self._text_between(colon + 1, end)
        self._add("choice", (self.tokens[at + 1].start, self.tokens[colon - 1].end, no))
        self._add("choice", (self.tokens[colon + 1].start, self.tokens[end - 1].end, yes))

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
                self._add("condition", (self.tokens[first].start, self.tokens[last - 1].end, value))

    def _simple(self, at, is_whole_body):
        end = self._extent(at, 1, {";"}) + 1
        self._bodies_in(at, end)
        first = self.tokens[at]
        if first.text in ("using", "static_assert", ";"):
            return end + 1, False
        if not is_whole_body:
            self._add("statement", (first.start, self.tokens[end].end, ";"))
        if first.text == "return" and end > at + 1 \
                and self._text_between(at + 1, end) not in EMPTY_RESULTS:
            self._add("result", (self.tokens[at + 1].start, self.tokens[end - 1].end, "{}"))
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
        places = [(self.tokens[first].start, self.tokens[end - 1].end) for first, end, _ in (one, other)]
        texts = [self.source[start:end] for start, end in places]
        self._add("order", (*places[0], texts[1]), (*places[1], texts[0]))
