"""The mutants of a source: every change of one operator, constant, comparison or statement."""

import hashlib
import re
from collections import Counter
from dataclasses import dataclass

from source_text import closing, line_of, tokens_of

# Binary operators have a blank on both sides here; pointers, references and templates do not.
SWAPS = {
    "<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==",
    "&&": "||", "||": "&&", "+": "-", "-": "+", "*": "/", "/": "*", "%": "*",
    "+=": "-=", "-=": "+=", "|": "&",
}  # fmt: skip
STEPS = {"++": "--", "--": "++"}
WORDS = {"true": "false", "false": "true"}
COMPARED = {"<", "<=", ">", ">=", "==", "!=", "&&", "||", "!"}
# Tokens after which a minus is a sign.
BEFORE_SIGN = {"(", ",", "=", "?", ":", "{", "return", "<", "<=", ">", ">=", "==", "!=", "+", "*"}
# Not removed: clang's thread-safety analysis, in lint, finds a missing lock of the host.
LOCKS = {"MutexLock"}
# Not removed: on these processors it does nothing.
NO_EFFECT = {"va_end"}
NUMBER = re.compile(r"(\d+)(.*)", re.DOTALL)


@dataclass(frozen=True)
class Mutant:
    path: str  # relative to the tree
    text: str  # the whole source, unchanged
    start: int
    end: int
    replacement: str

    @property
    def line(self):
        return line_of(self.text, self.start)

    def applied(self):
        return self.text[: self.start] + self.replacement + self.text[self.end :]

    @property
    def lines(self):
        """The start and the end of the changed lines."""
        return self.text.rfind("\n", 0, self.start) + 1, self.text.find("\n", self.end)

    @property
    def change(self):
        """The change, independent of line numbers and indentation."""
        first, last = self.lines
        line = self.text[first : self.start], self.text[self.start : self.end], self.text[self.end : last]
        return [part.split() for part in (*line, self.replacement)]

    def diff(self):
        """The changed lines, before and after."""
        first, last = self.lines
        changed = self.applied()
        before = self.text[first:last].split("\n")
        after = changed[first : last + len(changed) - len(self.text)].split("\n")
        return [f"-{line}" for line in before] + [f"+{line}" for line in after]


def mutants_of(path, text):
    tokens = tokens_of(text)
    spans = {}
    for index in range(len(tokens)):
        for start, end, replacement in changes(text, tokens, index):
            spans[(start, end, replacement)] = None
    return [Mutant(path, text, *span) for span in spans]


def in_order(mutants, seed):
    """The mutants in the order of the seed. The position of each depends on itself alone, so an edit
    elsewhere adds or removes mutants there, and moves no others."""
    alike = Counter()

    def key(mutant):
        identity = repr((seed, mutant.path, mutant.change))
        alike[identity] += 1
        return hashlib.sha256(f"{identity}{alike[identity]}".encode()).digest()

    return sorted(mutants, key=key)


def changes(text, tokens, index):
    token = tokens[index]
    for replacement in replacements(text, tokens, index):
        yield token.start, token.end, replacement
    yield from negated_conditions(text, tokens, index)
    yield from deleted_statements(text, tokens, index)


def replacements(text, tokens, index):
    token = tokens[index]
    if token.kind == "number":
        return [] if has_no_effect(tokens, index) else neighbours(token.text)
    if token.kind == "string":
        return [shorter(token.text)]
    if token.kind == "character":
        return ["'?'" if token.text != "'?'" else "'!'"]
    if token.text in WORDS:
        return [WORDS[token.text]]
    return operators_for(text, tokens, index)


def operators_for(text, tokens, index):
    token = tokens[index]
    if token.text in STEPS:
        return [STEPS[token.text]]
    if token.text == "!" or (token.text == "-" and tokens[index - 1].text in BEFORE_SIGN):
        return [""]
    blanks = text[token.start - 1] in " \n" and text[token.end] in " \n"
    return [SWAPS[token.text]] if blanks and token.text in SWAPS else []


def has_no_effect(tokens, index):
    """True for the 0 of a pure virtual function, or of a local number that a call then sets, and for the
    maximum of a lock, which is only given back after it was taken: Semaphore lock{1, 1}."""
    if [token.text for token in tokens[index - 3 : index]] == ["{", "1", ","]:
        return tokens[index - 5].text == "Semaphore"
    if tokens[index].text != "0" or tokens[index - 1].text != "=":
        return False
    if tokens[index - 2].text in (")", "const"):
        return True
    start = index - 2
    while tokens[start - 1].kind in ("name", "number") or tokens[start - 1].text in ("=", ","):
        start -= 1
    return tokens[start].text == "int" and tokens[start - 1].text in (";", "{", "}")


def neighbours(text):
    """The number plus one, and the number minus one unless that is negative."""
    whole, rest = NUMBER.fullmatch(text.replace("'", "")).groups()
    if whole == "0" and rest[:1] in ("x", "X", "b"):
        return []
    return [f"{number}{rest}" for number in (int(whole) + 1, int(whole) - 1) if number >= 0]


def shorter(text):
    """The text without its last character; an empty text gets one."""
    inner = re.findall(r"\\.|.", text[1:-1])
    return f'"{"".join(inner[:-1])}"' if inner else '"x"'


def negated_conditions(text, tokens, index):
    """The negation of a condition that has no operator to change."""
    if tokens[index].text not in ("if", "while") or tokens[index + 1].text != "(":
        return
    last = closing(tokens, index + 1)
    inside = tokens[index + 2 : last]
    if any(token.text in COMPARED | {"=", ";"} for token in inside):
        return
    start, end = inside[0].start, inside[-1].end
    yield start, end, f"!({text[start:end]})"


def deleted_statements(text, tokens, index):
    """The removal of a call, an assignment, or an object that acts at the end of its scope."""
    if index > 0 and tokens[index - 1].text not in (";", "{", "}", ")", "else"):
        return
    last = end_of_statement(tokens, index)
    if last is None:
        return
    statement = tokens[index:last]
    start, end = tokens[index].start, tokens[last].end
    if statement[0].text == "return" and is_call(statement[1:]):
        yield start, end, "return;"
    elif statement[0].text in NO_EFFECT:
        return
    elif is_call(statement) or is_assignment(statement) or is_scope_object(tokens, index, last):
        yield start, end, ";"


def end_of_statement(tokens, index):
    """The index of the semicolon that ends the statement at `index`, if it is a simple statement."""
    if tokens[index].kind != "name" and tokens[index].text not in ("++", "--", "::"):
        return None
    position = index
    while position < len(tokens) and tokens[position].text != ";":
        if tokens[position].text in ("(", "[", "{"):
            position = closing(tokens, position)
        elif tokens[position].text in ("}", ")"):
            return None
        position += 1
    return position if position < len(tokens) else None


def is_call(statement):
    """name(...), a.b(...), a->b(...), f(...)(...), a chain of them, or an increment."""
    if not statement:
        return False
    if statement[0].text in STEPS or statement[-1].text in STEPS:
        return True
    return after_place(statement) == [] and statement[-1].text == ")"


def is_assignment(statement):
    rest = after_place(statement)
    if not rest or statement[-1].text in ("default", "delete"):
        return False
    return rest[0].text in ("=", "+=", "-=", "*=", "|=")


def after_place(statement):
    """The tokens after the name, member, element or call chain at the start of a statement. None: the
    statement does not start with one."""
    position = 0
    wants_name = True
    while position < len(statement):
        token = statement[position]
        if wants_name:
            if token.kind != "name" or token.text in ("return", "delete", "case", "new", "if"):
                return None
            wants_name = False
        elif token.text in (".", "->", "::"):
            wants_name = True
        elif token.text in ("(", "["):
            position = closing(statement, position)
        else:
            return statement[position:]
        position += 1
    return []


def is_scope_object(tokens, index, last):
    """const Guard guard(lock); with a name that the rest of its block does not use."""
    statement = tokens[index:last]
    opening = next((i for i, token in enumerate(statement) if token.text == "("), None)
    if opening is None or statement[0].text != "const" or statement[-1].text != ")":
        return False
    if index > 0 and tokens[index - 1].text == ")":  # a function
        return False
    if any(token.text in LOCKS | {"="} for token in statement):
        return False
    name = statement[opening - 1].text
    return name not in (token.text for token in rest_of_block(tokens, last))


def rest_of_block(tokens, index):
    depth = 0
    for token in tokens[index:]:
        depth += {"{": 1, "}": -1}.get(token.text, 0)
        if depth < 0:
            return
        yield token
