"""Counts the ways in which a backtracking search can go through a text.

A search tries one way after another. It is fast on every text if, at each character, only a few
ways are left. That number depends on the pattern and on the text; here it is bounded for all texts
at once: the sets of ways that a next character can leave are followed until no new set turns up.
All that makes a search slow (nested repeats, repeats side by side, many optional parts) shows as a
number that is too high.
"""

from __future__ import annotations

from collections import Counter
from dataclasses import dataclass

from vantrel.util.regex.alphabet import MOST_SYMBOLS, rare_characters, share
from vantrel.util.regex.syntax import Character, Choice, Pattern, Repeat, Sequence, Start

# The default patterns need half of the places and a tenth of the tries and of the work. The limits
# keep the check itself short, too: it is strangers' patterns that it looks at. A step of work is to
# add a number of ways to another.
_MOST_PLACES = 2_000
_MOST_TRIES = 1_000
_MOST_WORK = 200_000

# The place of all that has not begun.
_BEFORE = 0

# From a place (a character of the pattern, by number) to the number of ways that lead there.
type _Ways = Counter[int]


class TooManyWaysError(ValueError):
    """Some text may have too many ways through it, or the pattern is too intricate to tell."""


def check_ways(pattern: Pattern) -> None:
    """Makes sure that a search takes at most about a thousand tries a character, on any text.

    Raises:
        TooManyWaysError: It may take more.
    """
    if _size(pattern) > _MOST_PLACES:
        raise TooManyWaysError
    work = _Work(_MOST_WORK)
    places = _Places(pattern, work)
    if len(set(places.symbols)) > MOST_SYMBOLS:
        raise TooManyWaysError
    rare = rare_characters(places.symbols)
    start = _frozen({_BEFORE: 1})
    seen, waiting = {start}, [start]
    while waiting:
        reached = _reached(places, dict(waiting.pop()), work)
        symbols = {places.symbols[place] for place in reached}
        work.spend(len(reached) * len(symbols))
        # The character is one of those that some symbol stands for: all places whose symbol shares
        # one of them may be next. That is rather too many than too few.
        for symbol in symbols:
            ways = _frozen(
                {p: n for p, n in reached.items() if share(symbol, places.symbols[p], rare)}
            )
            if ways not in seen:
                seen.add(ways)
                waiting.append(ways)


def _frozen(ways: dict[int, int]) -> frozenset[tuple[int, int]]:
    return frozenset(ways.items())


class _Work:
    """The steps that are left to a check; it gives up when there are none."""

    def __init__(self, steps: int) -> None:
        self._left = steps

    def spend(self, steps: int) -> None:
        self._left -= steps
        if self._left < 0:
            raise TooManyWaysError

    def add(self, ways: _Ways, more: _Ways, factor: int = 1) -> None:
        """Adds so many times some more ways to others."""
        if factor:
            self.spend(len(more))
            for place, number in more.items():
                ways[place] += number * factor


def _reached(places: _Places, ways: dict[int, int], work: _Work) -> _Ways:
    """Gives all places that are tried at the next character."""
    reached: _Ways = Counter()
    work.add(reached, places.again.first)
    at_the_end = places.again.empty
    for place, number in ways.items():
        work.add(reached, places.after[place], number)
        at_the_end += number * places.ends[place]
    if reached.total() + at_the_end > _MOST_TRIES:
        raise TooManyWaysError
    return reached


@dataclass
class _Part:
    """What a part of a pattern begins and ends with, each with the number of ways to do so.

    Attributes:
        empty: The number of ways to match the empty text.
        first: The places of the first character.
        last: The places of the last character.
    """

    empty: int
    first: _Ways
    last: _Ways


class _Places:
    """The places of a pattern and the ways between them.

    Attributes:
        symbols: What fits each place.
        after: The places that may follow each place.
        ends: The places where the pattern may be over.
        again: How a search begins anew, after it has failed, at a later character.
    """

    def __init__(self, pattern: Pattern, work: _Work, at_start: bool = True) -> None:
        self.symbols = [""]
        self.after: list[_Ways] = [Counter()]
        self._work = work
        self._at_start = at_start
        whole = self._part(pattern)
        self.after[_BEFORE] = whole.first
        self.ends = whole.last + Counter({_BEFORE: whole.empty})
        self.again: _Part = whole
        if at_start:
            self.again = _Places(pattern, work, at_start=False).again

    def _part(self, pattern: Pattern) -> _Part:
        self._work.spend(1)
        match pattern:
            case Character(source):
                self.symbols.append(source)
                self.after.append(Counter())
                place = len(self.symbols) - 1
                return _Part(0, Counter([place]), Counter([place]))
            case Start():
                return _Part(int(self._at_start), Counter(), Counter())
            case Sequence(parts):
                return self._sequence([self._part(part) for part in parts])
            case Choice(parts):
                return self._choice([self._part(part) for part in parts])
            case Repeat(part, least, most):
                return self._repeat(part, least, most)

    def _choice(self, parts: list[_Part]) -> _Part:
        whole = _Part(0, Counter(), Counter())
        for part in parts:
            whole.empty += part.empty
            self._work.add(whole.first, part.first)
            self._work.add(whole.last, part.last)
        return whole

    def _sequence(self, parts: list[_Part]) -> _Part:
        whole = _Part(1, Counter(), Counter())
        for part in parts:
            self._connect(whole, part)
            self._work.add(whole.first, part.first, whole.empty)
            last: _Ways = Counter()
            self._work.add(last, whole.last, part.empty)
            self._work.add(last, part.last)
            whole.last = last
            whole.empty *= part.empty
        return whole

    def _repeat(self, part: Pattern, least: int, most: int | None) -> _Part:
        copies = [self._part(part) for _ in range(least)]
        if most is None:
            loop = self._part(part)
            if loop.empty:
                raise TooManyWaysError
            self._connect(loop, loop)
            return self._sequence([*copies, _Part(1, loop.first, loop.last)])
        optional = _Part(1, Counter(), Counter())
        for _ in range(most - least):
            optional = self._sequence([self._part(part), optional])
            optional.empty += 1
        return self._sequence([*copies, optional])

    def _connect(self, before: _Part, behind: _Part) -> None:
        for place, ways in before.last.items():
            self._work.add(self.after[place], behind.first, ways)


def _size(pattern: Pattern) -> int:
    """The number of places, with repeats written out."""
    match pattern:
        case Sequence(parts) | Choice(parts):
            return 1 + sum(map(_size, parts))
        case Repeat(part, least, most):
            return _size(part) * max(1, least + 1 if most is None else most)
        case _:
            return 1
