"""C++ source as tokens, without the parts that no mutant may change."""

import re
from dataclasses import dataclass

TOKEN = re.compile(
    r"""
    (?P<comment>   //[^\n]* | /\*.*?\*/ )
  | (?P<directive> ^[ \t]*\#(?:\\\n|[^\n])* )
  | (?P<string>    "(?:\\.|[^"\\\n])*" )
  | (?P<character> '(?:\\.|[^'\\\n])' )
  | (?P<number>    \d(?:[\w.]|'\d)* )
  | (?P<name>      [A-Za-z_]\w* )
  | (?P<operator>  \.\.\.|<<=|>>=|->|::|\+\+|--|&&|\|\||[-=!<>+*/%&|^]=|<<|[-+*/%<>=!&|^~?:;,.(){}\[\]] )
    """,
    re.VERBOSE | re.MULTILINE | re.DOTALL,
)
# Declarations and attributes have no effect at run time: skipped up to the semicolon, or with their
# parentheses.
DECLARED_ONLY = {"static_assert", "using"}
ATTRIBUTES = {
    "__attribute__", "CLOCK_GUARDED_BY", "CLOCK_POINTEE_GUARDED_BY", "CLOCK_ACQUIRES",
    "CLOCK_TRY_ACQUIRES", "CLOCK_RELEASES", "CLOCK_REQUIRES", "CLOCK_EXCLUDES",
}  # fmt: skip


@dataclass(frozen=True)
class Token:
    kind: str
    text: str
    start: int

    @property
    def end(self):
        return self.start + len(self.text)


def tokens_of(text):
    """The tokens of a source without comments, directives, attributes and bare declarations."""
    found = [
        Token(match.lastgroup, match.group(), match.start())
        for match in TOKEN.finditer(text)
        if match.lastgroup not in ("comment", "directive")
    ]
    return list(without_declarations(found))


def without_declarations(tokens):
    index = 0
    while index < len(tokens):
        if tokens[index].text in DECLARED_ONLY:
            while tokens[index].text != ";":
                index += 1
        elif tokens[index].text in ATTRIBUTES:
            index = closing(tokens, index + 1)
        elif tokens[index].text == "extern":
            index += 1  # skips the language, too
        else:
            yield tokens[index]
        index += 1


def closing(tokens, index):
    """The index of the bracket that closes the one at `index`."""
    depth = 0
    for position in range(index, len(tokens)):
        if tokens[position].text in ("(", "{", "["):
            depth += 1
        elif tokens[position].text in (")", "}", "]"):
            depth -= 1
            if depth == 0:
                return position
    raise ValueError("unbalanced brackets")


def line_of(text, position):
    return text.count("\n", 0, position) + 1
