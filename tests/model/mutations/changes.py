"""Every small change that can be made to the library's sources: each constant, comparison, operator and message changed in
one place.

A source is taken apart into tokens. Comments, #include, attributes and conditions of the preprocessor are left out; what a macro is made
of is code like any other. `changes()` gives the changes of one source:

  constants   a number one greater; true and false, the least and the greatest number exchanged; an enumerator replaced by
              the next of its enumeration; null replaced by an address at which there is nothing; the ordinary success and
              the ordinary failure exchanged
  operators   == and !=, < and <=, > and >=, && and ||, + and -, * and /, << and >>, ++ and --, isFailure and isSuccess,
              std::min and std::max exchanged; ! and the sign of a number taken away; what if, while, for and ?: ask negated
  messages    each string, of whatever use, with its last letter replaced by the next in the alphabet, or, without a letter,
              its last other character by another one; what printf would make a number of stays
"""

import re
import typing

TOKEN = re.compile(r"""
      (?P<comment>//[^\n]*|/\*.*?\*/)
    | (?P<directive>^[ \t]*\#[ \t]*(?:define[ \t]+\w+(?:\([^)]*\))?|(?!define\b)(?:\\.|[^\n\\])*))
    | (?P<string>"(?:\\.|[^"\\\n])*")
    | (?P<char>'(?:\\.|[^'\\\n])+')
    | (?P<number>\d(?:['.\w]|(?<=[eE])[+-])*)
    | (?P<name>[A-Za-z_]\w*)
    | (?P<operator>->\*|<<=|>>=|::|->|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|[^\s\\])
    """, re.VERBOSE | re.DOTALL | re.MULTILINE)
ENUMERATION = re.compile(r"\benum\s+(?:class\s+)?(\w+)\s*(?::[\s\w:]*)?\{([^}]*)\}")
SPECIFIER = re.compile(r"%[-+ #0]*\d*(?:\.\d+)?(?:hh|h|ll|l|z|j|t)?[diouxXcsp%]|\\.")

# An address at which there is nothing, of whatever type is wanted, made known in front of a source without moving its lines.
NOWHERE = "Nowhere{}"
NOWHERE_IS = """#ifndef NOWHERE
#define NOWHERE
struct Nowhere {
    template <typename T> operator T*() const { return reinterpret_cast<T*>(16); }
};
#endif
#line 1
"""

EXCHANGED_NAMES = {"true": "false", "isFailure": "isSuccess", "ResultOk": "ResultFailed", "min": "max",
                   "PTHREAD_CANCEL_DISABLE": "PTHREAD_CANCEL_ENABLE"}
EXCHANGED_NAMES.update({after: before for before, after in EXCHANGED_NAMES.items()})
EXCHANGED_OPERATORS = {"==": "!=", "<": "<=", ">": ">=", "&&": "||", "+": "-", "*": "/", "<<": ">>", "++": "--", "+=": "-=",
                       "*=": "/=", "<<=": ">>=", "&": "|", "&=": "|="}
EXCHANGED_OPERATORS.update({after: before for before, after in EXCHANGED_OPERATORS.items()})
EXCHANGED_OPERATORS["%"] = "*"
# What is also a bracket or part of a type: an operator only with blanks on both sides.
NEEDS_BLANKS = set("< > & && *".split())
BRACKETS = {")": "(", "]": "[", "}": "{"}
BEFORE_A_VALUE = {"return", "case", "else", "throw"}
# The levels of trace messages are constants without an enumeration.
LEVELS = {"TraceCode": ["error", "moduleRegistrationError", "information", "notice"]}


class Token(typing.NamedTuple):
    kind: str
    text: str
    start: int
    end: int


class Change(typing.NamedTuple):
    file: str
    number: int  # of the line, from 1
    line: str
    before: str
    after: str
    occurrence: int  # among the same ones of the line, from 1
    edits: tuple  # (start, end, text), in ascending order

    def name(self):
        """What tells it from other changes, for as long as its line stays what it is."""
        again = f" ({self.occurrence})" if self.occurrence > 1 else ""
        return f"{self.file} | {self.line} | {self.before} -> {self.after}{again}"

    def applied(self, source):
        for start, end, text in reversed(self.edits):
            source = source[:start] + text + source[end:]
        return NOWHERE_IS + source if self.after == NOWHERE else source


def tokens(source):
    found = (Token(match.lastgroup, match.group(), match.start(), match.end()) for match in TOKEN.finditer(source))
    return [token for token in found if token.kind not in ("comment", "directive")]


def enumerations(sources):
    """Of each enumeration in one of the sources, by its name: its enumerators."""
    found = dict(LEVELS)
    for source in sources:
        code = re.sub(r"//[^\n]*|/\*.*?\*/", "", source, flags=re.DOTALL)
        for name, body in ENUMERATION.findall(code):
            found[name] = re.findall(r"(\w+)\s*(?:=[^,]*)?(?:,|$)", body)
    return found


def next_letter(letter):
    if letter.isdigit():
        return str((int(letter) + 1) % 10)
    return {"z": "a", "Z": "A"}.get(letter, chr(ord(letter) + 1))


def changed_string(text):
    kept = [place for match in SPECIFIER.finditer(text) for place in range(*match.span())]
    free = [place for place in range(1, len(text) - 1) if place not in kept]
    letters = [place for place in free if text[place].isalnum()]
    if letters:
        return text[:letters[-1]] + next_letter(text[letters[-1]]) + text[letters[-1] + 1:]
    if free:
        return text[:free[-1]] + {".": ",", "_": "-"}.get(text[free[-1]], "#") + text[free[-1] + 1:]
    return text[:-1] + 'x"'


def changed_number(text):
    hexadecimal = re.fullmatch(r"(0[xX])([\da-fA-F']+)(\w*)", text)
    if hexadecimal:
        start, digits, rest = hexadecimal.groups()
        return f"{start}{int(digits.replace(chr(39), ''), 16) + 1:X}{rest}"
    digits, rest = re.fullmatch(r"([\d']+)(.*)", text).groups()
    return f"{int(digits.replace(chr(39), '')) + 1}{rest}"


class Finder:
    """Finds the changes of one source."""

    def __init__(self, file, source, enumerators):
        self.file = file
        self.source = source
        self.lines = source.splitlines()
        self.tokens = tokens(source)
        self.enumerators = enumerators
        self.seen = {}
        self.opening, self.closing = {}, {}
        waiting = []
        for index, token in enumerate(self.tokens):
            if token.text in BRACKETS.values():
                waiting.append(index)
            elif token.text in BRACKETS:
                self.opening[index] = waiting.pop()
                self.closing[self.opening[index]] = index

    def text(self, index):
        return self.tokens[index].text if 0 <= index < len(self.tokens) else ""

    def change(self, start, end, after, edits=None):
        number = self.source.count("\n", 0, start) + 1
        line = self.lines[number - 1].rstrip("\\").strip()
        before = " ".join(self.source[start:end].split())
        occurrence = self.seen[number, before, after] = self.seen.get((number, before, after), 0) + 1
        return Change(self.file, number, line, before, after, occurrence, tuple(edits or [(start, end, after)]))

    def replaced(self, index, after):
        return self.change(self.tokens[index].start, self.tokens[index].end, after)

    def negated(self, first, last):
        """The condition from the first to the last token, unless another change negates it."""
        if not self.is_negated_by_a_word(first, last):
            start, end = self.tokens[first].start, self.tokens[last].end
            yield self.change(start, end, "not so", [(start, start, "!("), (end, end, ")")])

    def is_negated_by_a_word(self, first, last):
        words, index = [], first
        while index <= last:
            words.append(self.text(index))
            index = self.closing.get(index, index) + 1
        if "&&" in words or "||" in words:
            return False
        return (words[0] in ("!", "true", "false") or "==" in words or "!=" in words
                or (words[0] in ("isFailure", "isSuccess") and len(words) == 2))

    def all(self):
        behind_attribute = 0
        for index, token in enumerate(self.tokens):
            if token.text == "__attribute__" or (token.text == "[" and self.text(index + 1) == "["):
                behind_attribute = self.closing[index if token.text == "[" else index + 1] + 1
            if index >= behind_attribute:
                yield from getattr(self, "of_" + token.kind)(index, token)

    def of_string(self, index, token):
        if self.text(index - 1) != "extern":
            yield self.replaced(index, changed_string(token.text))

    def of_char(self, index, token):
        yield self.replaced(index, token.text[:-2] + next_letter(token.text[-2]) + "'")

    def of_number(self, index, token):
        is_pure = self.text(index - 1) == "=" and self.text(index + 1) == ";" and self.text(index - 2) in (")", "const")
        if not is_pure:
            yield self.replaced(index, changed_number(token.text))

    def of_name(self, index, token):
        before, after = self.text(index - 1), self.text(index + 1)
        if token.text == "nullptr":
            if before not in ("==", "!=") and after not in ("==", "!="):
                yield self.replaced(index, NOWHERE)
        elif token.text in ("if", "while", "for"):
            yield from self.of_statement(index)
        elif token.text in EXCHANGED_NAMES:
            declared = self.tokens[index - 1].kind == "name" and before not in BEFORE_A_VALUE
            if not declared and after != "=" and (token.text not in ("min", "max") or before == "::"):
                yield self.replaced(index, EXCHANGED_NAMES[token.text])
        elif before == "::" and token.text in self.enumerators.get(self.text(index - 2), []):
            others = self.enumerators[self.text(index - 2)]
            yield self.replaced(index, others[(others.index(token.text) + 1) % len(others)])

    def of_statement(self, index):
        opened = index + 2 if self.text(index + 1) == "constexpr" else index + 1
        closed = self.closing[opened]
        if self.text(index) != "for":
            yield from self.negated(opened + 1, closed - 1)
            return
        stops = [place for place in range(opened, closed) if self.text(place) == ";" and self.is_directly_in(place, opened)]
        if len(stops) == 2 and stops[0] + 1 < stops[1]:
            yield from self.negated(stops[0] + 1, stops[1] - 1)

    def is_directly_in(self, place, opened):
        return not any(opened < start < place < end for start, end in self.closing.items())

    def of_operator(self, index, token):
        if token.text == "?":
            yield from self.negated(self.start_of_condition(index), index - 1)
        elif token.text == "!":
            yield self.replaced(index, "")
        elif token.text == "-" and self.is_sign(index):
            yield self.replaced(index, "")
        elif token.text in EXCHANGED_OPERATORS and self.is_operator(token):
            yield self.replaced(index, EXCHANGED_OPERATORS[token.text])

    def is_sign(self, index):
        before = self.tokens[index - 1]
        return before.text in BEFORE_A_VALUE or (before.kind == "operator" and before.text not in BRACKETS)

    def is_operator(self, token):
        around = self.source[token.start - 1] + self.source[token.end:token.end + 1]
        return token.text not in NEEDS_BLANKS or around.isspace()

    def start_of_condition(self, index):
        """Where the condition of the ?: at `index` begins."""
        while index > 0:
            before = index - 1
            if before in self.opening:
                index = self.opening[before]
            elif self.text(before) in ("=", "return", ",", ";", "?", ":", "(", "[", "{", "+=", "-="):
                return index
            else:
                index = before
        return 0


def changes(file, source, enumerators):
    return list(Finder(file, source, enumerators).all())
