"""Everything that a report compares, computed from the two tables."""

from __future__ import annotations

from collections.abc import Mapping
from dataclasses import dataclass

import pandas as pd

from vantrel.report.gaps import Gaps, compare_gaps
from vantrel.report.lengths import Lengths, compare_lengths
from vantrel.report.names import Places, frequent_names
from vantrel.report.reappearing import Reappearance, reappearing_names
from vantrel.report.repeats import Repeats, compare_repeats, compare_rows
from vantrel.report.shares import Shares, compare_shares

SHARED = ("gender", "title", "country")
MEASURED = ("username", "email")
DISTINCT = ("username", "email", "fullname")


@dataclass(frozen=True)
class Figures:
    """How a real table and a sample of it compare.

    Only labelled columns are looked at. An attribute that neither table holds has no entry.
    """

    real_rows: int
    sampled_rows: int
    shares: tuple[Shares, ...]
    gaps: tuple[Gaps, ...]
    names: Places
    lengths: tuple[Lengths, ...]
    repeats: tuple[Repeats, ...]
    reappearing: tuple[Reappearance, ...]


def compare(real: pd.DataFrame, sampled: pd.DataFrame, columns: Mapping[str, str]) -> Figures:
    """Compares a real table with a sample of it.

    Time and memory are about linear in the rows; values are compared as texts.

    Args:
        real: The real table; it may have no rows.
        sampled: The sample; it may have no rows and lack columns, as the real table may.
        columns: From attribute to column, the same column in both tables.
    """
    there = {a: c for a, c in columns.items() if c in real.columns or c in sampled.columns}
    return Figures(
        len(real),
        len(sampled),
        tuple(compare_shares(real, sampled, there, a) for a in SHARED if a in there),
        tuple(compare_gaps(real, sampled, there, a) for a in there),
        frequent_names(real, sampled, there),
        tuple(compare_lengths(real, sampled, there, a) for a in MEASURED if a in there),
        (
            compare_rows(real, sampled, there),
            *(compare_repeats(real, sampled, there, a) for a in DISTINCT if a in there),
        ),
        reappearing_names(real, sampled, there),
    )
