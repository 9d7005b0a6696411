"""Reads patterns that keep to a simple part of the syntax of regular expressions.

That part is what tells words apart: characters and classes, groups, alternatives, repeats, anchors
and a leading ``(?i)``. All else (references back, looking around, flags inside) is refused, so that
nothing is read here in another way than ``re`` reads it, now or in a later version. So are classes
with characters beyond U+FFFF: ``re`` goes through those one by one at each character of a text.
"""

from __future__ import annotations

import re
from collections.abc import Iterator
from dataclasses import dataclass

from vantrel.util.regex.alphabet import is_rare

_DEEPEST = 20

_TOKEN = re.compile(
    r"""
      (?P<open> \( (?: \?: | \?P<\w+> | (?!\?) ) )
    | (?P<close> \) )
    | (?P<bar> \| )
    | (?P<repeat> (?: [*+?] | \{\d+\} | \{\d*,\d*\} ) \?? (?!\+) )
    | (?P<start> \^ | \\A )
    | (?P<border> \$ | \\[bBZ] )
    | (?P<character>
          \. | [^\\.^$*+?{\[|()]
        | \\ (?: [dDsSwWtnrfv] | x[0-9A-Fa-f]{2} | u[0-9A-Fa-f]{4} | [^0-9A-Za-z] )
        | \[ (?! [^\]]* (?: -- | && | ~~ | \|\| ) ) \^?+ \]?+ (?: \\. | [^\[\]\\] )* \]
      )
    """,
    re.VERBOSE | re.DOTALL,
)


class UnsupportedPatternError(ValueError):
    """A pattern uses more of the syntax than is read here."""


@dataclass(frozen=True)
class Character:
    """One character of the text; the source is a pattern of a character or a class."""

    source: str


@dataclass(frozen=True)
class Start:
    """Holds at the start of the text only."""


@dataclass(frozen=True)
class Sequence:
    """Its parts one after another; without parts, the empty text."""

    parts: tuple[Pattern, ...]


@dataclass(frozen=True)
class Choice:
    """One of its parts."""

    parts: tuple[Pattern, ...]


@dataclass(frozen=True)
class Repeat:
    """Its part so many times; ``most`` is ``None`` where nothing limits it."""

    part: Pattern
    least: int
    most: int | None


type Pattern = Character | Start | Sequence | Choice | Repeat


def read(pattern: str) -> Pattern:
    """Reads a pattern that ``re`` can compile.

    Borders ("$", "\\b") are read as the empty text.

    Raises:
        UnsupportedPatternError: It uses more than the simple part of the syntax, or is nested too
            deep.
    """
    tokens = _Tokens(pattern)
    tree = _choice(tokens, depth=0)
    assert tokens.kind is None  # re has compiled the pattern: no bracket is closed too often
    return tree


class _Tokens:
    """The tokens of a pattern; ``kind`` and ``text`` are those of the current one."""

    def __init__(self, pattern: str) -> None:
        self._all = _tokens(pattern)
        self.advance()

    def advance(self) -> None:
        self.kind, self.text = next(self._all, (None, ""))

    def take(self, kind: str) -> bool:
        """Goes on if the current token is of the kind."""
        if self.kind != kind:
            return False
        self.advance()
        return True


def _tokens(pattern: str) -> Iterator[tuple[str | None, str]]:
    at = len("(?i)") if pattern.startswith("(?i)") else 0
    while at < len(pattern):
        token = _TOKEN.match(pattern, at)
        if token is None:
            raise UnsupportedPatternError(f"what stands from {pattern[at : at + 8]!r} on")
        if token.group()[0] == "[" and any(map(is_rare, token.group())):
            raise UnsupportedPatternError("a class with a character beyond U+FFFF")
        yield token.lastgroup, token.group()
        at = token.end()


def _choice(tokens: _Tokens, depth: int) -> Pattern:
    if depth > _DEEPEST:
        raise UnsupportedPatternError(f"groups in more than {_DEEPEST} others")
    parts = [_sequence(tokens, depth)]
    while tokens.take("bar"):
        parts.append(_sequence(tokens, depth))
    return Choice(tuple(parts)) if len(parts) > 1 else parts[0]


def _sequence(tokens: _Tokens, depth: int) -> Pattern:
    parts = []
    while tokens.kind not in ("bar", "close", None):
        part = _single(tokens, depth)
        repeat = tokens.text
        if tokens.take("repeat"):
            part = Repeat(part, *_bounds(repeat))
        parts.append(part)
    return Sequence(tuple(parts))


def _single(tokens: _Tokens, depth: int) -> Pattern:
    text = tokens.text
    if tokens.take("open"):
        inner = _choice(tokens, depth + 1)
        tokens.take("close")
        return inner
    if tokens.take("character"):
        return Character(text)
    if tokens.take("start"):
        return Start()
    tokens.take("border")
    return Sequence(())


def _bounds(repeat: str) -> tuple[int, int | None]:
    simple: dict[str, tuple[int, int | None]] = {"*": (0, None), "+": (1, None), "?": (0, 1)}
    if repeat[0] in simple:
        return simple[repeat[0]]
    least, comma, most = repeat.rstrip("?").strip("{}").partition(",")
    return int(least or 0), int(most) if most else (None if comma else int(least))
