"""Reads the texts of cells out of a block of CSV, and writes others in their place."""

from __future__ import annotations

from collections.abc import Mapping

import numpy as np
import pyarrow as pa
import pyarrow.compute as pc

from vantrel.tables.copying.grid import Grid
from vantrel.tables.copying.quotes import Flags, Positions

_QUOTE = b'"'[0]


class Column:
    """The cells of a column in a block.

    Attributes:
        texts: What they hold; an empty cell is missing, one in quotation marks an empty text.
    """

    def __init__(self, grid: Grid, place: int) -> None:
        """Takes the block and the place of the column in a row."""
        self._text = grid.text
        self._starts, self._ends = grid.cells(place)
        self._is_quoted = _are_quoted(grid.text, self._starts, self._ends)
        self.texts = self._read()

    def written(self, texts: pa.Array, separator: str) -> pa.Array:
        """The cells with other texts: those of the same keep their very bytes."""
        texts = texts.cast(pa.string())
        is_same = pc.fill_null(pc.equal(texts, self.texts), False)
        cells = pc.fill_null(texts, "")
        needs_quotes = pc.and_not(
            pc.or_(pa.array(self._is_quoted), _need_quotes(cells, separator)), texts.is_null()
        )
        if pc.any(needs_quotes).as_py():
            doubled = pc.replace_substring(cells, '"', '""') if _has(cells, '"') else cells
            in_quotes = pc.binary_join_element_wise('"', doubled, '"', "")
            cells = pc.if_else(needs_quotes, in_quotes, cells)
        if not pc.any(is_same).as_py():
            return cells
        return pc.if_else(is_same, _slices(self._text, self._starts, self._ends), cells)

    def _read(self) -> pa.Array:
        texts = _slices(self._text, self._starts + self._is_quoted, self._ends - self._is_quoted)
        if self._is_quoted.any() and _has(texts, '"'):
            single = pc.replace_substring(texts, '""', '"')
            texts = pc.if_else(pa.array(self._is_quoted), single, texts)
        is_empty = self._starts == self._ends
        if not is_empty.any():
            return texts
        return pc.if_else(pa.array(is_empty), pa.scalar(None, pa.string()), texts)


def replaced(grid: Grid, cells: Mapping[int, pa.Array]) -> pa.Buffer | bytes:
    """The bytes of a block with other cells in some columns, named by their places in a row."""
    if not cells:
        return grid.text[: grid.end]
    bounds = [each for place in sorted(cells) for each in grid.cells(place)]
    # What is between the cells that are replaced, those cells, and so on, all in one array.
    offsets = np.concatenate([[0], np.column_stack(bounds).ravel(), [grid.end]])
    pieces = _pieces(grid.text, offsets)
    picked = np.arange(len(pieces))
    rows = np.arange(len(grid))[:, None] + len(grid) * np.arange(len(cells))
    picked[1::2] = len(pieces) + rows.ravel()
    new = pa.concat_arrays([pieces, *(cells[place] for place in sorted(cells))])
    return _bytes_of(new.take(pa.array(picked)))


def _are_quoted(text: bytes, starts: Positions, ends: Positions) -> Flags:
    signs = np.frombuffer(text, np.uint8)
    begin: Flags = signs[np.minimum(starts, len(signs) - 1)] == _QUOTE
    return begin & (starts < ends)


def _slices(text: bytes, starts: Positions, ends: Positions) -> pa.Array:
    pieces = _pieces(text, np.column_stack([starts, ends]).ravel())
    return pieces.take(pa.array(np.arange(0, len(pieces), 2)))


def _pieces(text: bytes, offsets: Positions) -> pa.Array:
    """A block cut into texts that share its memory."""
    buffers = [None, pa.py_buffer(offsets.astype(np.int32)), pa.py_buffer(text)]
    return pa.Array.from_buffers(pa.string(), len(offsets) - 1, buffers)


def _need_quotes(texts: pa.Array, separator: str) -> pa.Array:
    is_empty = pc.equal(texts, "")
    if not any(_has(texts, sign) for sign in (separator, '"', "\r", "\n")):
        return is_empty
    pattern = rf'[\x{{{ord(separator):x}}}"\r\n]'
    return pc.or_(is_empty, pc.match_substring_regex(texts, pattern))


def _has(texts: pa.Array, sign: str) -> bool:
    """Whether any of the texts has a sign; maybe also where one beyond a slice has it."""
    data = texts.buffers()[2]
    return data is not None and sign.encode() in data.to_pybytes()


def _bytes_of(texts: pa.Array) -> pa.Buffer:
    """The bytes of all texts, one behind the other."""
    _, offsets, data = texts.buffers()
    ends = np.frombuffer(offsets, np.int32)[texts.offset : texts.offset + len(texts) + 1]
    return data.slice(ends[0], ends[-1] - ends[0])
