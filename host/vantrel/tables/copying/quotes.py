"""Finds what stands in quotation marks in a block of CSV."""

from __future__ import annotations

import re
from dataclasses import dataclass
from typing import Any

import numpy as np

type Positions = np.ndarray[Any, np.dtype[np.int64]]
type Signs = np.ndarray[Any, np.dtype[np.uint8]]
type Flags = np.ndarray[Any, np.dtype[np.bool]]

_QUOTE = b'"'[0]


@dataclass(frozen=True)
class Quotes:
    """The quotation marks around cells in a block.

    Attributes:
        inside: For each byte, whether it stands in quotation marks or is the first of two.
        is_open: Whether the last cell's are not closed before the block ends.
        is_torn: Whether something other than blanks follows the closing one of a cell.
        padded: Where cells begin that have blanks around their quotation marks; where these begin
            and end; in rows.
    """

    inside: Flags
    is_open: bool
    is_torn: bool = False
    padded: Positions | None = None

    def without_blanks(self, starts: Positions, ends: Positions) -> tuple[Positions, Positions]:
        """Takes off the blanks around quotation marks from where cells begin and end."""
        if self.padded is None:
            return starts, ends
        cells, opening, closing = self.padded
        nearest = np.minimum(np.searchsorted(cells, starts), len(cells) - 1)
        is_padded = cells[nearest] == starts
        return (
            np.where(is_padded, opening[nearest], starts),
            np.where(is_padded, closing[nearest], ends),
        )


def quotes_of(text: bytes, signs: Signs, separator: bytes) -> Quotes | None:
    """Finds the quotation marks around cells; None where there are none at all."""
    if b'"' not in text:
        return None
    marks = np.flatnonzero(signs == _QUOTE)
    if len(separator) > 1 or not _all_around_cells(signs, marks, separator):
        return _one_by_one(text, separator)
    # Each turns what was outside to what is inside, and back: two for one in a cell do no harm.
    bounds = np.concatenate([[0], marks, [len(signs)]])
    inside = np.repeat(np.arange(len(marks) + 1) % 2 == 1, np.diff(bounds))
    return Quotes(inside, is_open=len(marks) % 2 == 1)


def _all_around_cells(signs: Signs, marks: Positions, separator: bytes) -> bool:
    """Tells whether no quotation mark stands within a cell that has none around it."""
    is_edge = np.zeros(256, dtype=bool)
    is_edge[list(separator + b'\r\n"')] = True
    opening, closing = marks[::2], marks[1::2]
    before = signs[np.maximum(opening - 1, 0)]  # the first byte is an edge, being the mark itself
    behind = signs[np.minimum(closing + 1, len(signs) - 1)]
    return bool(is_edge[before].all() and is_edge[behind].all())


def _one_by_one(text: bytes, separator: bytes) -> Quotes:
    """Finds them where there are others, which are letters like any: 5" for 5 inches."""
    edge = re.escape(separator)
    around = re.compile(
        rb"(?:\A|(?<=[\r\n])|(?<=%b))( *+)" % edge
        + rb'"[^"]*+(?:""[^"]*+)*+(?:"|(?P<open>\Z))'
        + rb"( *+)(?:(?=%b|[\r\n])|\Z|(?P<torn>.))" % edge
    )
    found = list(around.finditer(text))
    cells = [(m.start(), m.end(1), m.start(3)) for m in found]
    inside = np.zeros(len(text) + 1, dtype=np.int8)
    for _, opening, closing in cells:
        inside[opening] += 1
        inside[closing] -= 1
    padded = [cell for cell, m in zip(cells, found, strict=True) if m[1] or m[3]]
    return Quotes(
        np.cumsum(inside[:-1], dtype=np.int8).astype(bool),
        is_open=any(m["open"] is not None for m in found),
        is_torn=any(m["torn"] is not None for m in found),
        padded=np.array(padded, dtype=np.int64).T if padded else None,
    )
