"""Finds where the rows and the cells of CSV lie in a block of bytes, all at once."""

from __future__ import annotations

from collections.abc import Callable
from dataclasses import dataclass, replace
from typing import NamedTuple

import numpy as np

from vantrel.tables.copying.quotes import Flags, Positions, Quotes, Signs, quotes_of

_LINE_FEED, _RETURN = b"\n\r"


class UnsoundError(Exception):
    """A block holds no rows like the header."""


class Dialect(NamedTuple):
    """How the rows of a file are written.

    Attributes:
        separator: What separates the cells.
        width: How many cells a row has.
    """

    separator: bytes
    width: int


@dataclass(frozen=True)
class Grid:
    """Whole rows in a block of bytes, with the blank lines among them.

    Attributes:
        text: The block, which begins where a row or a blank line does.
        end: Where the last whole row or blank line ends, line break and all.
        separator: How many bytes there are between two cells.
        starts: Where each row begins.
        ends: Where the last cell of each row ends.
        separators: Where the separators of each row are.
        quotes: The quotation marks in the block, if there are any.
    """

    text: bytes
    end: int
    separator: int
    starts: Positions
    ends: Positions
    separators: Positions
    quotes: Quotes | None

    def __len__(self) -> int:
        """The number of rows."""
        return len(self.starts)

    def cells(self, place: int) -> tuple[Positions, Positions]:
        """Where the cells of a column begin and end, quotation marks included."""
        is_last = place == self.separators.shape[1]
        starts = self.separators[:, place - 1] + self.separator if place else self.starts
        ends = self.ends if is_last else self.separators[:, place]
        return self.quotes.without_blanks(starts, ends) if self.quotes else (starts, ends)

    def without_first(self, rows: int) -> Grid:
        """The same block with fewer rows; the bytes of the others stay."""
        return replace(
            self,
            starts=self.starts[rows:],
            ends=self.ends[rows:],
            separators=self.separators[rows:],
        )


def grid_of(text: bytes, dialect: Dialect, *, is_last: bool) -> Grid:
    """Finds the whole rows in a block.

    Args:
        text: The block.
        dialect: How its rows are written.
        is_last: Whether nothing comes behind it, so that its last row needs no line break.
    """
    signs = np.frombuffer(text, np.uint8)
    quotes = quotes_of(text, signs, dialect.separator)
    if quotes and (quotes.is_torn or (is_last and quotes.is_open)):
        raise UnsoundError

    def places(sign: int) -> Positions:
        is_there = signs == sign
        return np.flatnonzero(is_there & ~quotes.inside if quotes else is_there)

    ends, nexts = _line_ends(text, signs, places, is_last=is_last)
    starts = np.concatenate([[0], nexts])[: len(ends)]
    end = int(nexts[-1]) if len(nexts) else 0
    separators = _separators(signs, dialect.separator, places)
    separators = separators[: np.searchsorted(separators, end)]
    rows = _rows(text, starts, ends, separators, dialect.width)
    if rows is not None:
        starts, ends = starts[rows], ends[rows]
    by_row = separators.reshape(len(starts), dialect.width - 1)
    return Grid(text, end, len(dialect.separator), starts, ends, by_row, quotes)


def _line_ends(
    text: bytes, signs: Signs, places: Callable[[int], Positions], *, is_last: bool
) -> tuple[Positions, Positions]:
    """Where lines end outside quotation marks, and where the next ones begin."""
    feeds = places(_LINE_FEED)
    ends, nexts = feeds, feeds + 1
    if b"\r" in text:
        own = feeds[signs[np.maximum(feeds - 1, 0)] != _RETURN]
        ends = np.union1d(places(_RETURN), own)
        behind = signs[np.minimum(ends + 1, len(signs) - 1)]
        nexts = ends + 1 + ((signs[ends] == _RETURN) & (behind == _LINE_FEED))
        if not is_last and text.endswith(b"\r"):  # what comes behind it may be its line feed
            return ends[:-1], nexts[:-1]
    if is_last and len(text) > (nexts[-1] if len(nexts) else 0):
        return np.append(ends, len(text)), np.append(nexts, len(text))
    return ends, nexts


def _separators(signs: Signs, separator: bytes, places: Callable[[int], Positions]) -> Positions:
    found = places(separator[0])
    for offset, sign in enumerate(separator[1:], 1):
        found = found[found + offset < len(signs)]
        found = found[signs[found + offset] == sign]
    return found


def _rows(
    text: bytes, starts: Positions, ends: Positions, separators: Positions, width: int
) -> Flags | None:
    """Tells which lines are rows; None where all are. The others must be blank."""
    counts = np.diff(np.searchsorted(separators, ends), prepend=0)
    is_row: Flags = counts == width - 1
    if is_row.all():
        return None
    for line in np.flatnonzero(~is_row).tolist():
        if counts[line] or not _is_blank(text[starts[line] : ends[line]]):
            raise UnsoundError
    return is_row


def _is_blank(line: bytes) -> bool:
    text = line.decode(errors="replace")
    return not text or text.removeprefix('"').removesuffix('"').isspace()
