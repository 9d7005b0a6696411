"""Arrays of strings out of tables of characters, one row each."""

from __future__ import annotations

from typing import Any

import numpy as np
import pyarrow as pa

type Characters = np.ndarray[tuple[int, int], np.dtype[np.uint8]]

NOTHING = 0
"""Stands where a shorter text has no character."""


def strings(characters: Characters) -> pa.Array:
    """Makes a string of each row, without the places that hold :data:`NOTHING`."""
    count, width = characters.shape
    ends = np.cumsum(characters != NOTHING, dtype=np.int32)[width - 1 :: width]
    offsets = np.append(np.int32(0), ends)
    data = characters.tobytes().translate(None, bytes([NOTHING]))
    return pa.StringArray.from_buffers(count, pa.py_buffer(offsets), pa.py_buffer(data))


def digits_of(numbers: Any, count: int) -> Characters:
    """Gives the last decimal digits of numbers as values from 0 to 9, the last one first."""
    digits = np.empty((len(numbers), count), dtype=np.uint8)
    for place in range(count):
        tens = numbers // np.uint64(10)  # without np.divmod, which takes ten times as long
        numbers, digits[:, place] = tens, numbers - tens * np.uint64(10)
    return digits
