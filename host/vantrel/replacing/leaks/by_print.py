"""Finds names by their prints: without regard to accents, and those that another table tells."""

from __future__ import annotations

import re
from typing import Any

import numpy as np
import pyarrow as pa
import pyarrow.compute as pc

from vantrel.replacing.leaks.cells import Integers
from vantrel.replacing.values.names import folded
from vantrel.replacing.values.prints import Prints, is_all_ascii, layout, prints, prints_of

# As prints are of names: with hyphens and apostrophes, and without what stands around them.
_OTHER_THAN_ASCII_AND_WORDS = r"[^\p{L}\p{N}\x00-\x7f]+"
_IS_OF_WORD = np.zeros(256, dtype=bool)
_IS_OF_WORD[list(b"0123456789abcdefghijklmnopqrstuvwxyz'-")] = True
_IS_OF_WORD[128:] = True
_WORD = re.compile(r"[^\W_]+(?:['\u2019-][^\W_]+)*")


class PrintedWords:
    """The words of the cells of a column, as prints.

    Args:
        texts: The cells, missing ones among them.
        is_of_interest: Which of them; all if None.
    """

    def __init__(self, texts: pa.Array, is_of_interest: Any = None) -> None:
        self._texts = texts
        numbers = (
            np.arange(len(texts)) if is_of_interest is None else np.flatnonzero(is_of_interest)
        )
        some = texts if is_of_interest is None else texts.take(pa.array(numbers))
        words = pc.fill_null(folded(some), "")
        if not is_all_ascii(words):  # takes ten times as long, and may stand between words
            words = pc.replace_substring_regex(words, _OTHER_THAN_ASCII_AND_WORDS, " ")
        data, starts, _ = layout(words)
        bounds = np.append(starts, len(data))
        starts, lengths = _spans_of(_IS_OF_WORD[data], bounds)
        self._prints = prints_of(data, starts, lengths)
        self._rows = numbers[np.searchsorted(bounds, starts, side="right") - 1]

    def rows_with(self, wanted: Prints) -> Integers:
        """The rows whose cell has the name of the row, by its print."""
        return np.unique(self._rows[self._prints == wanted[self._rows]])

    def found(self, wanted: Prints) -> pa.Array:
        """Gives that name as each cell has it, missing in those that have it not."""
        rows = self.rows_with(wanted)
        names: Any = np.full(len(self._texts), None, dtype=object)
        for row, text in zip(rows, self._texts.take(pa.array(rows)).to_pylist(), strict=True):
            words = pa.array(_WORD.findall(text), pa.string())
            is_name = prints(folded(words)) == wanted[row]
            names[row] = words[int(np.argmax(is_name))].as_py() if is_name.any() else None
        return pa.array(names, pa.string())


def _spans_of(is_of_word: Any, bounds: Integers) -> tuple[Integers, Integers]:
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
