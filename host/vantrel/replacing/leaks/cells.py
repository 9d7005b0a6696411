"""Rules out, for all cells of a column at once, nearly all that do not have a value.

What is left is looked at one by one. A cell that has the value is never ruled out.
"""

from __future__ import annotations

import re
from functools import cached_property
from typing import Any, NamedTuple

import numpy as np
import pyarrow as pa
import pyarrow.compute as pc

from vantrel.replacing.leaks.exact import FEWEST_DIGITS, FEWEST_OF_A_PART
from vantrel.replacing.prints import layout, words_at, words_from_each_byte

type Integers = np.ndarray[Any, np.dtype[Any]]

_LETTERS = b"0123456789abcdefghijklmnopqrstuvwxyz"
_IS_OF_WORD = np.zeros(256, dtype=bool)
_IS_OF_WORD[list(_LETTERS)] = True
_IS_OF_WORD[128:] = True

_OTHER_THAN_ASCII_AND_WORDS = re.compile(r"[^\w\x00-\x7f]")

# What is no key of a word, which is known by its first bytes, and the end of no number.
_NO_WORD = 0
_NO_NUMBER = -1


class _Parts(NamedTuple):
    """The words of all cells, or the digits.

    Attributes:
        bounds: Which is the first of each cell; in the end how many there are.
        keys: What each is known by.
    """

    bounds: Integers
    keys: Integers

    def rows_with(self, wanted: Integers) -> Integers:
        """The rows whose cell has a part that is known by what is wanted in the row."""
        counts = np.diff(self.bounds)
        hits = np.flatnonzero(self.keys == np.repeat(wanted, counts))
        return np.unique(np.searchsorted(self.bounds, hits, side="right") - 1)


class NumberEnds(NamedTuple):
    """The last digits of the numbers of some rows.

    Attributes:
        long: Of those that may be found as parts of others, or others as parts of them.
        short: Of those that may not, for they have fewer digits.
    """

    long: Integers
    short: Integers


class Cells:
    """The cells of a column."""

    def __init__(self, texts: pa.Array) -> None:
        """Takes texts, missing ones among them."""
        self._bytes, starts, _ = layout(_folded(texts))
        self._offsets = np.append(starts, len(self._bytes))

    def may_have(self, known: Integers | NumberEnds) -> Integers:
        """The rows whose cell may have the word, or the number, of the row."""
        return (
            self._may_have_number(known)
            if isinstance(known, NumberEnds)
            else self._words.rows_with(known)
        )

    def _may_have_number(self, ends: NumberEnds) -> Integers:
        rows = self._long_numbers.rows_with(ends.long)
        if (ends.short == _NO_NUMBER).all():
            return rows
        return np.union1d(rows, self._short_numbers.rows_with(ends.short))

    def first_words(self) -> Integers:
        """The key of the first word of each cell."""
        bounds, keys = self._words
        first = np.append(keys, np.uint64(_NO_WORD))[bounds[:-1]]
        return np.where(np.diff(bounds) > 0, first, np.uint64(_NO_WORD))

    def ends_of_numbers(self) -> NumberEnds:
        """The last digits of the number in each cell."""
        bounds, values = self._digits
        significant = np.append(np.flatnonzero(values), len(values))
        first = significant[np.searchsorted(significant, bounds[:-1])]
        counts = bounds[1:] - first  # without the zeros in front

        def ends(numbers: _Parts, fewest: int, most: float) -> Integers:
            last = np.append(numbers.keys, _NO_NUMBER)[bounds[1:] - 1]
            return np.where((counts >= fewest) & (counts < most), last, _NO_NUMBER)

        return NumberEnds(
            ends(self._long_numbers, FEWEST_OF_A_PART, np.inf),
            ends(self._short_numbers, FEWEST_DIGITS, FEWEST_OF_A_PART),
        )

    @cached_property
    def _words(self) -> _Parts:
        starts, lengths = spans_of(_IS_OF_WORD[self._bytes], self._offsets)
        keys = words_at(words_from_each_byte(self._bytes), starts, lengths)
        return _Parts(np.searchsorted(starts, self._offsets), keys)

    @cached_property
    def _digits(self) -> _Parts:
        digits = self._bytes - np.uint8(ord("0"))
        places = np.flatnonzero(digits < 10)
        return _Parts(np.searchsorted(places, self._offsets), digits[places].astype(np.int32))

    @cached_property
    def _long_numbers(self) -> _Parts:
        return self._numbers(FEWEST_OF_A_PART)

    @cached_property
    def _short_numbers(self) -> _Parts:
        return self._numbers(FEWEST_DIGITS)

    def _numbers(self, length: int) -> _Parts:
        """The digits, each known by itself and those before it, which may be another cell's."""
        bounds, digits = self._digits
        padded = np.append(np.zeros(length, np.int32), digits)
        values = np.zeros(len(digits), np.int32)
        for back in range(length):
            values += np.int32(10**back) * padded[length - back : len(padded) - back]
        return _Parts(bounds, values)


def spans_of(is_of_word: Any, bounds: Integers) -> tuple[Integers, Integers]:
    """Gives the starts and lengths of the words of cells that follow each other in memory.

    Args:
        is_of_word: Whether each byte is one of a word.
        bounds: Where each cell starts, and where the last one ends. No word goes over a bound.
    """
    begins, ends = is_of_word.copy(), is_of_word.copy()
    begins[1:] &= ~is_of_word[:-1]
    ends[:-1] &= ~is_of_word[1:]
    inner = bounds[(bounds > 0) & (bounds < len(is_of_word))]
    begins[inner] = is_of_word[inner]
    ends[inner - 1] = is_of_word[inner - 1]
    starts = np.flatnonzero(begins)
    return starts, np.flatnonzero(ends) - starts + 1


def _folded(texts: pa.Array) -> pa.Array:
    """Texts without regard to case, in which all that is not of ASCII is of words."""
    texts = pc.fill_null(texts.cast(pa.string()), "")
    is_ascii = pc.string_is_ascii(texts)
    lower = pc.ascii_lower(texts)
    if pc.all(is_ascii).as_py() is not False:
        return lower
    others = texts.filter(pc.invert(is_ascii)).to_pylist()
    folded = [_OTHER_THAN_ASCII_AND_WORDS.sub(" ", text.casefold()) for text in others]
    return pc.replace_with_mask(lower, pc.invert(is_ascii), pa.array(folded, pa.string()))
