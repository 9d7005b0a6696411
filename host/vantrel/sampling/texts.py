"""Columns of texts as bytes, which are looked at and rewritten all at once.

A column is pandas' array of texts without a missing one: of pyarrow, of Python's strings, or of
objects. pyarrow's are read and made where they lie; Python's have to be joined and cut.
"""

from __future__ import annotations

from typing import Any, NamedTuple

import numpy as np
import pandas as pd

from vantrel.rows.drawing import Places

# One of pandas' arrays, which have no class in common that tells all that they do.
type Column = Any
type Bytes = np.ndarray[tuple[int], np.dtype[np.uint8]]

_LINE_BREAK = ord("\n")


class Lines(NamedTuple):
    """The texts of a column in UTF-8.

    Args:
        signs: The bytes of all texts in their order, with or without a line break between two.
        starts: Where each text starts.
        ends: Where each ends.
    """

    signs: Bytes
    starts: Places
    ends: Places


def lines_of(texts: Column) -> Lines:
    """Gives the bytes of a column's texts."""
    if not _is_of_arrow(texts.dtype):
        return _cut(joined(texts))
    column = _arrow_array(texts)
    _, offsets, signs = column.buffers()
    limits = np.frombuffer(offsets, dtype=np.int64)[column.offset :][: len(column) + 1]
    return Lines(np.frombuffer(signs or b"", dtype=np.uint8), limits[:-1], limits[1:])


def joined(texts: Column) -> bytes:
    """Gives the texts in UTF-8, each with a line break behind it."""
    if not _is_of_arrow(texts.dtype) or not len(texts):
        return "".join([f"{text}\n" for text in texts.tolist()]).encode()
    import pyarrow as pa
    import pyarrow.compute as pc

    column = _arrow_array(texts)
    in_one = pa.ListArray.from_arrays(pa.array([0, len(column)], pa.int32()), column)
    line_break = pa.scalar("\n", column.type)
    return bytes(pc.binary_join(in_one, line_break)[0].as_buffer()) + b"\n"


def parted(lines: bytes, dtype: Any) -> Column:
    """Makes a column of lines in ASCII, each with a line break behind it."""
    if not _is_of_arrow(dtype):
        return pd.array(lines.decode("ascii").split("\n")[:-1], dtype=dtype)
    import pyarrow as pa

    limits = np.append(0, _cut(lines).ends)
    limits[1:] -= np.arange(len(limits) - 1)
    signs = lines.translate(None, b"\n")
    buffers = (pa.py_buffer(part) for part in (limits, signs))
    return dtype.__from_arrow__(pa.LargeStringArray.from_buffers(len(limits) - 1, *buffers))


def replaced(texts: Column, places: Places, others: Column) -> Column:
    """Gives a column with others in some places."""
    chosen = np.arange(len(texts))
    chosen[places] = len(texts) + np.arange(len(places))
    return type(texts)._concat_same_type([texts, others]).take(chosen)


def _cut(lines: bytes) -> Lines:
    signs = np.frombuffer(lines, dtype=np.uint8)
    ends = np.flatnonzero(signs == _LINE_BREAK)
    return Lines(signs, np.append(0, ends + 1)[:-1], ends)


def _is_of_arrow(dtype: Any) -> bool:
    return isinstance(dtype, pd.StringDtype) and dtype.storage == "pyarrow"


def _arrow_array(texts: Column) -> Any:
    import pyarrow as pa

    column = texts.__arrow_array__()
    if isinstance(column, pa.ChunkedArray):
        column = column.combine_chunks()
    return column.cast(pa.large_string())
