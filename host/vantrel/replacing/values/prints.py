"""Prints: 64 bits of each text of a column, by which texts are compared that nobody need hold.

A print is no keyed hash and never leaves the processes of a run. Made by whole columns, it takes
some tens of nanoseconds a text.
"""

from __future__ import annotations

from collections.abc import Iterator
from typing import Any

import numpy as np
import pyarrow as pa

type Prints = np.ndarray[tuple[int], np.dtype[np.uint64]]

NO_PRINT = np.uint64(0)
"""The print of what is missing; no text has it."""

WORD = 8
_FIRST, _SECOND = np.uint64(0xBF58476D1CE4E5B9), np.uint64(0x94D049BB133111EB)
# By the number of bytes that are left of a text, what keeps these of the eight that are read.
_KEPT = np.array([(1 << 8 * left) - 1 for left in range(WORD + 1)], dtype=np.uint64)
_LAST_OF_ASCII = 127


def prints(texts: pa.Array, seed: int = 0) -> Prints:
    """Gives the print of each text, :data:`NO_PRINT` where it is missing.

    Args:
        texts: An array of strings or binary values, not of the large kinds.
        seed: Other seeds give other prints, of 64 bits.
    """
    made = prints_of(*layout(texts), seed)
    if texts.null_count:
        made[texts.is_null().to_numpy(zero_copy_only=False)] = NO_PRINT
    return made


def prints_of(data: Any, starts: Any, lengths: Any, seed: int = 0) -> Prints:
    """Gives the prints of texts that are parts of some bytes."""
    made: Prints = mixed(lengths.astype(np.uint64) ^ np.uint64(seed))
    for rows, words in _words(data, starts, lengths):
        made[rows] = mixed(made[rows] ^ words)
    made[made == NO_PRINT] = np.uint64(1)
    return made


def mixed(values: Any) -> Any:
    """Mixes bits one to one, so that a change of any changes about half of them."""
    values = (values ^ (values >> np.uint64(30))) * _FIRST
    values = (values ^ (values >> np.uint64(27))) * _SECOND
    return values ^ (values >> np.uint64(31))


def layout(texts: pa.Array) -> tuple[Any, Any, Any]:
    """Gives the bytes of all texts, and the start and the length of each."""
    _, offsets, data = texts.buffers()
    if not len(texts) or offsets is None:
        return np.zeros(0, np.uint8), *np.zeros((2, len(texts)), np.int64)
    ends = np.frombuffer(offsets, dtype=np.int32)[texts.offset :][: len(texts) + 1]
    ends = ends.astype(np.int64)
    whole = np.frombuffer(data, dtype=np.uint8) if data is not None else np.zeros(0, np.uint8)
    return whole[ends[0] : ends[-1]], ends[:-1] - ends[0], np.diff(ends)


def is_all_ascii(texts: pa.Array) -> bool:
    """Whether all texts are of ASCII: looked at as one, which takes less than a nanosecond each."""
    data, *_ = layout(texts)
    return bool(data.max(initial=0) <= _LAST_OF_ASCII)


def _words(data: Any, starts: Any, lengths: Any) -> Iterator[tuple[Any, Prints]]:
    """Reads all texts by eight bytes; gives the rows that have as many, and what they have."""
    words = words_from_each_byte(data)
    rows: Any = slice(None)
    for at in range(0, int(lengths.max(initial=0)), WORD):
        if at:
            rows = np.flatnonzero(lengths > at)
        begin = np.minimum(at, lengths[rows])
        yield rows, words_at(words, starts[rows] + begin, lengths[rows] - begin)


def words_at(words: Any, starts: Any, lengths: Any) -> Prints:
    """Picks words by where texts start, and keeps of each what belongs to its text.

    Args:
        words: What :func:`words_from_each_byte` gives.
        starts: Where the texts start.
        lengths: How long they are.
    """
    picked: Prints = words[starts] & _KEPT[np.minimum(lengths, WORD)]
    return picked


def words_from_each_byte(data: Any) -> Any:
    """Gives the eight bytes from each place on as an integer, the first of them the lowest."""
    padded = np.concatenate([data, np.zeros(WORD, dtype=np.uint8)])
    return np.ndarray(len(data) + 1, dtype="<u8", buffer=padded.data, strides=(1,))
