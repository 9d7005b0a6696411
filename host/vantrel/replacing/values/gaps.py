"""Which cells have nothing: missing ones, blank ones, and words that exports write for them."""

from __future__ import annotations

from typing import Any

import numpy as np
import pyarrow as pa
import pyarrow.compute as pc

from vantrel.replacing.values.prints import layout

# To the letter, for "Null" is a last name and "NA" may be one, or Namibia.
_WORDS = ("NULL", "\\N", "n/a", "N/A", "-", "?")
GAPS = pa.array(["", *_WORDS], pa.string())
"""What stands for nothing, besides missing and blank texts."""

# The first bytes of these words, and of blanks in ASCII and beyond.
_MAY_BEGIN = np.zeros(256, dtype=bool)
_MAY_BEGIN[: ord(" ") + 1] = True
_MAY_BEGIN[[ord(word[0]) for word in _WORDS]] = True
_MAY_BEGIN[[0xC2, 0xE1, 0xE2, 0xE3]] = True


def is_gap(texts: pa.Array) -> Any:
    """Tells where a text is missing, blank, or such a word with or without blanks around it."""
    data, starts, lengths = layout(texts)
    if not len(data):  # they are all missing or empty
        return np.ones(len(texts), dtype=bool)
    may_be = np.flatnonzero((lengths == 0) | _MAY_BEGIN[data.take(starts, mode="clip")])
    found = texts.is_null().to_numpy(zero_copy_only=False).copy()
    words = pc.utf8_trim_whitespace(texts.take(pa.array(may_be)))
    found[may_be] |= pc.is_in(words, GAPS).to_numpy(zero_copy_only=False)
    return found


def missing_where_gap(texts: pa.Array) -> pa.Array:
    """Gives texts of which those that are gaps are missing."""
    gaps = is_gap(texts)
    return pc.if_else(pa.array(gaps), pa.scalar(None, pa.string()), texts) if gaps.any() else texts
