"""Finds a value of a person in a text, as a reader would."""

from __future__ import annotations

import re
from collections.abc import Iterator

from vantrel.attributes import PHONES

# Shorter user names are words like any.
_SHORTEST_USERNAME = 3

# Numbers of fewer digits are anything, and parts of numbers sooner.
FEWEST_DIGITS = 6
FEWEST_OF_A_PART = 8

# The most digits that a country adds before a number, and the most groups that one is written in.
_PREFIX = 4
_MOST_GROUPS = 20

_DIGITS = re.compile("[0-9]+")
_NUMBER = re.compile(r"[0-9]+(?:[\s()+./\u2010-\u2015-]{1,3}[0-9]+)*")

# Days have as many digits as short numbers have, and tables have many of them.
_DAY = re.compile(r"(?<![\d-])(?:19|20)\d\d-(?:0[1-9]|1[0-2])-(?:0[1-9]|[12]\d|3[01])(?![\d-])")

type Span = tuple[int, int]


def is_found(attribute: str, text: str, value: str) -> bool:
    """Tells whether a text has the value of an attribute; of a full name, each of its words."""
    if attribute == "fullname":
        parts = re.findall(r"[^\W_]+", value)
        return len(parts) > 1 and all(any(found("firstname", text, each)) for each in parts)
    return any(found(attribute, text, value))


def found(attribute: str, text: str, value: str) -> Iterator[Span]:
    """Where the value of an attribute is in a text: as whole words, whatever their case.

    A number may be found again in a part of where it was found.
    """
    if attribute in PHONES:
        yield from _numbers(text, value)
    elif attribute != "username" or len(value) >= _SHORTEST_USERNAME:
        yield from _words(text, value)


def _words(text: str, value: str) -> Iterator[Span]:
    folded, wanted = text.casefold(), value.strip().casefold()
    if not any(map(str.isalnum, wanted)):
        return
    end = 0
    while (start := folded.find(wanted, end)) >= 0:
        end = start + len(wanted)
        if folded[start - 1 : start].isalnum() or folded[end : end + 1].isalnum():
            end = start + 1
        else:
            yield _unfolded(text, folded, (start, end))


def _unfolded(text: str, folded: str, span: Span) -> Span:
    """Where in a text something is that is somewhere in what it became without regard to case."""
    if len(text) == len(folded):  # no character becomes several, as the German sharp s does
        return span
    places = [place for place, sign in enumerate(text) for _ in sign.casefold()]
    return places[span[0]], places[span[1] - 1] + 1


def _numbers(text: str, value: str) -> Iterator[Span]:
    """Where a text has the digits of a number, whatever is written between them."""
    wanted = "".join(_DIGITS.findall(value)).lstrip("0")
    if len(wanted) < FEWEST_DIGITS:
        return
    without_days = _DAY.sub(lambda day: "x" * len(day[0]), text) if "-" in text else text
    for number in _NUMBER.finditer(without_days):
        groups = [group.span() for group in _DIGITS.finditer(text, *number.span())]
        for place, (start, _) in enumerate(groups):
            if end := _end_of(text, groups[place:][:_MOST_GROUPS], wanted):
                yield _with_sign(text, start, end)


def _end_of(text: str, groups: list[Span], wanted: str) -> int | None:
    """Where the groups of digits end that are a number when they are joined, from the first on."""
    digits = ""
    for start, end in groups:
        digits = (digits + text[start:end]).lstrip("0")
        if _are_same(digits, wanted):
            return end
    return None


def _with_sign(text: str, start: int, end: int) -> Span:
    """What is before a number and belongs to it: a plus, or what opens a bracket in it."""
    before = text[start - 1 : start]
    belongs = before == "+" or (before == "(" and ")" in text[start:end])
    return start - belongs, end


def _are_same(one: str, other: str) -> bool:
    if one == other:
        return True
    shorter, longer = sorted((one, other), key=len)
    return (
        len(shorter) >= FEWEST_OF_A_PART
        and len(longer) - len(shorter) <= _PREFIX
        and longer.endswith(shorter)
    )
