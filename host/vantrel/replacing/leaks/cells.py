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
from vantrel.replacing.values.prints import WORD, is_all_ascii, layout, words_from_each_byte

type Integers = np.ndarray[Any, np.dtype[Any]]
type Flags = np.ndarray[Any, np.dtype[np.bool]]

_LETTERS, _DIGITS = 26, 10
_LAST_OF_ASCII = 127

_OTHER_THAN_ASCII_AND_WORDS = re.compile(r"[^\w\x00-\x7f]")

# What is no key of a word, which is known by its first bytes, and the end of no number.
_NO_WORD = np.uint64(0)
_NO_NUMBER = np.uint64((1 << 64) - 1)

_NO_ROWS: Integers = np.zeros(0, np.int64)

_FIRST_BYTE, _ZERO = np.uint64(0xFF), np.uint64(ord("0"))

# A bit of each of eight bytes, and all bits of the last ones, which hold digits.
_EACH_BYTE = np.uint64(0x0101010101010101)
_LAST_DIGITS = {
    count: np.uint64((1 << 64) - (1 << 8 * (WORD - count)))
    for count in (FEWEST_DIGITS, FEWEST_OF_A_PART)
}


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


class FirstWords(NamedTuple):
    """The first words of some rows.

    Attributes:
        keys: What each is known by.
        has_number: Whether any begins with a digit.
    """

    keys: Integers
    has_number: bool


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

    def may_have(self, known: FirstWords | NumberEnds) -> Integers:
        """The rows whose cell may have the word, or the number, of the row."""
        if isinstance(known, NumberEnds):
            return self._may_have_number(known)
        may_be = known.has_number or self._has_letters
        return self._words.rows_with(known.keys) if may_be else _NO_ROWS

    def _may_have_number(self, ends: NumberEnds) -> Integers:
        most = np.diff(self._digits.bounds).max(initial=0)
        rows = _NO_ROWS
        if most >= FEWEST_OF_A_PART:
            rows = self._numbers(FEWEST_OF_A_PART).rows_with(ends.long)
        if most < FEWEST_DIGITS or (ends.short == _NO_NUMBER).all():
            return rows
        return np.union1d(rows, self._numbers(FEWEST_DIGITS).rows_with(ends.short))

    def first_words(self) -> FirstWords:
        """The first word of each cell."""
        keys = self._keys_of_first_words()
        return FirstWords(keys, bool(((keys & _FIRST_BYTE) - _ZERO < _DIGITS).any()))

    def _keys_of_first_words(self) -> Integers:
        starts, ends = self._offsets[:-1], self._offsets[1:]
        is_empty = starts == ends
        if (is_empty | np.append(self._is_of_word, False)[starts]).all():
            return np.where(is_empty, _NO_WORD, self._keys_of_words(starts))
        bounds, keys = self._words
        first = np.append(keys, _NO_WORD)[bounds[:-1]]
        return np.where(np.diff(bounds) > 0, first, _NO_WORD)

    def ends_of_numbers(self) -> NumberEnds:
        """The last digits of the number in each cell."""
        bounds, values = self._digits
        significant = np.flatnonzero(np.append(values, np.uint8(1)))
        first = significant[np.searchsorted(significant, bounds[:-1])]
        counts = bounds[1:] - first  # without the zeros in front

        def ends(length: int, most: float) -> Integers:
            last = self._digits_before[bounds[1:]] & _LAST_DIGITS[length]
            return np.where((counts >= length) & (counts < most), last, _NO_NUMBER)

        return NumberEnds(ends(FEWEST_OF_A_PART, np.inf), ends(FEWEST_DIGITS, FEWEST_OF_A_PART))

    @cached_property
    def _has_letters(self) -> bool:
        """Whether there are any, or other characters that words may begin with than digits."""
        return bool(self._bytes.max(initial=0) >= ord("a"))

    @cached_property
    def _is_of_word(self) -> Flags:
        """Whether each byte is a letter or a digit, or of another character than of ASCII."""
        signs = self._bytes
        is_of_word: Flags = signs > _LAST_OF_ASCII
        is_of_word |= signs - np.uint8(ord("a")) < _LETTERS
        is_of_word |= signs - np.uint8(ord("0")) < _DIGITS
        return is_of_word

    @cached_property
    def _goes_on(self) -> Flags:
        """Whether each byte is of the same word as one before it, if that is of a word at all."""
        goes_on = self._is_of_word.copy()
        # Cells that follow each other in memory are words of their own.
        goes_on[self._offsets[self._offsets < len(goes_on)]] = False
        return goes_on

    @cached_property
    def _words(self) -> _Parts:
        begins = self._is_of_word.copy()
        begins[1:] &= ~(self._is_of_word[:-1] & self._goes_on[1:])
        starts = np.flatnonzero(begins)
        return _Parts(np.searchsorted(starts, self._offsets), self._keys_of_words(starts))

    def _keys_of_words(self, starts: Integers) -> Integers:
        """The first eight bytes of words, without what is behind those that are shorter."""
        goes_on = words_from_each_byte(np.append(self._goes_on, False).view(np.uint8))[starts + 1]
        # A bit in each byte behind the word's own; those below the lowest are where the word is.
        ends = (goes_on << np.uint64(8) | np.uint64(1)) ^ _EACH_BYTE
        lowest = ends & (~ends + np.uint64(1))
        keys: Integers = words_from_each_byte(self._bytes)[starts] & (lowest - np.uint64(1))
        return keys

    @cached_property
    def _digits(self) -> _Parts:
        digits = self._bytes - np.uint8(ord("0"))
        is_digit = digits < _DIGITS
        before = np.append(np.int32(0), np.cumsum(is_digit, dtype=np.int32))
        return _Parts(before[self._offsets], digits[is_digit])

    @cached_property
    def _digits_before(self) -> Integers:
        """The eight digits before each one, which may be another cell's, and before the end."""
        before = np.zeros(WORD, np.uint8)
        words: Integers = words_from_each_byte(np.concatenate([before, self._digits.keys]))
        return words

    def _numbers(self, length: int) -> _Parts:
        """The digits, each known by itself and those before it."""
        bounds, digits = self._digits
        words = self._digits_before[1:][: len(digits)]
        return _Parts(bounds, words & _LAST_DIGITS[length])


def _folded(texts: pa.Array) -> pa.Array:
    """Texts without regard to case, in which all that is not of ASCII is of words."""
    texts = pc.fill_null(texts.cast(pa.string()), "")
    # Joined, as of a slice of large texts that was cast Arrow would copy too few bytes.
    lower = pc.ascii_lower(pa.concat_arrays([texts]))
    if is_all_ascii(lower):
        return lower
    is_other = pc.invert(pc.string_is_ascii(texts))
    others = texts.filter(is_other).dictionary_encode()
    folded = [
        _OTHER_THAN_ASCII_AND_WORDS.sub(" ", text.casefold())
        for text in others.dictionary.to_pylist()
    ]
    made = pa.array(folded, pa.string()).take(others.indices)
    return pc.replace_with_mask(lower, is_other, made)
