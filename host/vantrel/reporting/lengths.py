"""How long the texts of a column are."""

from __future__ import annotations

from dataclasses import dataclass

import numpy as np
import numpy.typing as npt
import pandas as pd

from vantrel.reporting.labelled import LabelledTable, column_names

MOST_BINS = 40


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
    real_lengths, sampled_lengths = (_lengths(each.texts(attribute)) for each in (real, sampled))
    return Lengths(
        attribute,
        column_names(real, sampled, attribute),
        _summary(real_lengths),
        _summary(sampled_lengths),
        _bins(real_lengths, sampled_lengths),
    )


def _lengths(values: pd.Series | None) -> npt.NDArray[np.int64]:
    if values is None or values.empty:  # without a value, a column need not be of texts
        return np.array([], dtype=np.int64)
    return np.asarray(values.str.len(), dtype=np.int64)


def _summary(lengths: npt.NDArray[np.int64]) -> LengthSummary | None:
    if not len(lengths):
        return None
    return LengthSummary(
        len(lengths),
        int(lengths.min()),
        float(np.median(lengths)),
        float(lengths.mean()),
        int(lengths.max()),
    )


def _bins(real: npt.NDArray[np.int64], sampled: npt.NDArray[np.int64]) -> tuple[LengthBin, ...]:
    """Cuts the lengths into equal bins; the longest hundredth shares the last one if it is long."""
    both = np.concatenate([real, sampled])
    if not len(both):
        return ()
    lowest, highest = int(both.min()), int(both.max())
    is_cut = highest - lowest >= MOST_BINS
    end = int(np.quantile(both, 0.99, method="lower")) if is_cut else highest
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


def _binned(lengths: npt.NDArray[np.int64], lows: npt.NDArray[np.int64]) -> npt.NDArray[np.float64]:
    places = np.searchsorted(lows, lengths, side="right") - 1
    return np.bincount(places, minlength=len(lows)) / max(len(lengths), 1)
