"""How long the texts of a column are."""

from __future__ import annotations

from dataclasses import dataclass
from typing import NamedTuple

import numpy as np
import numpy.typing as npt

from vantrel.reporting.labelled import LabelledTable, column_names

MOST_BINS = 40

Integers = npt.NDArray[np.int64]


@dataclass(frozen=True)
class LengthSummary:
    """The lengths of a column's texts, in characters (Unicode code points)."""

    values: int
    shortest: int
    median: float
    mean: float
    longest: int


@dataclass(frozen=True)
class LengthBin:
    """How frequent lengths from ``low`` to ``high`` are; ``high`` is None for "and longer".

    The shares are of all texts of the table, from 0 to 1.
    """

    low: int
    high: int | None
    real: float
    sampled: float


@dataclass(frozen=True)
class Lengths:
    """The distribution of lengths, real beside sampled; None for a table without any text."""

    attribute: str
    column: str
    real: LengthSummary | None
    sampled: LengthSummary | None
    bins: tuple[LengthBin, ...]


def compare_lengths(real: LabelledTable, sampled: LabelledTable, attribute: str) -> Lengths:
    """Compares the lengths of an attribute's texts."""
    real_lengths, sampled_lengths = (_lengths(table, attribute) for table in (real, sampled))
    return Lengths(
        attribute,
        column_names(real, sampled, attribute),
        _summary(real_lengths),
        _summary(sampled_lengths),
        _bins(real_lengths, sampled_lengths),
    )


class _Counted(NamedTuple):
    """Lengths, the shortest first, and how many texts are of each."""

    lengths: Integers
    texts: Integers

    def at(self, place: int) -> int:
        """The length of the text at a place among all texts, the shortest first."""
        return int(self.lengths[np.searchsorted(self.texts.cumsum(), place, side="right")])


def _lengths(table: LabelledTable, attribute: str) -> _Counted:
    found = []
    if table.has(attribute):
        value = table.column(attribute)
        found = table.table.query(
            f"SELECT length({value}), count(*) FROM {{rows}} WHERE {value} IS NOT NULL GROUP BY 1"
            " ORDER BY 1"
        )
    return _Counted(*np.array(found, dtype=np.int64).reshape(-1, 2).T)


def _summary(counted: _Counted) -> LengthSummary | None:
    lengths, texts = counted
    count = int(texts.sum())
    if not count:
        return None
    median = (counted.at((count - 1) // 2) + counted.at(count // 2)) / 2
    mean = int(lengths @ texts) / count
    return LengthSummary(count, int(lengths[0]), median, mean, int(lengths[-1]))


def _bins(real: _Counted, sampled: _Counted) -> tuple[LengthBin, ...]:
    """Cuts the lengths into equal bins; the longest hundredth shares the last one if it is long."""
    lengths = np.union1d(real.lengths, sampled.lengths)
    if not len(lengths):
        return ()
    both = _Counted(lengths, _texts_of(real, lengths) + _texts_of(sampled, lengths))
    lowest, highest = int(lengths[0]), int(lengths[-1])
    is_cut = highest - lowest >= MOST_BINS
    end = both.at(int(0.99 * (int(both.texts.sum()) - 1))) if is_cut else highest
    width = -(-(end - lowest + 1) // MOST_BINS)
    lows = np.arange(lowest, end + 1, width)
    if is_cut and highest >= lows[-1] + width:
        lows = np.append(lows, lows[-1] + width)
    is_open = highest >= lows[-1] + width
    highs = [*(int(low) - 1 for low in lows[1:]), None if is_open else int(lows[-1]) + width - 1]
    shares = [_binned(side, lows) for side in (real, sampled)]
    return tuple(
        LengthBin(int(low), high, float(r), float(s))
        for low, high, r, s in zip(lows, highs, *shares, strict=True)
    )


def _texts_of(counted: _Counted, lengths: Integers) -> Integers:
    texts = np.zeros(len(lengths), dtype=np.int64)
    texts[np.searchsorted(lengths, counted.lengths)] = counted.texts
    return texts


def _binned(counted: _Counted, lows: Integers) -> npt.NDArray[np.float64]:
    places = np.searchsorted(lows, counted.lengths, side="right") - 1
    texts = np.bincount(places, weights=counted.texts, minlength=len(lows))
    return texts / max(int(counted.texts.sum()), 1)
