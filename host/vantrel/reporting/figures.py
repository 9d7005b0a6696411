"""Everything that a report compares, computed from the two tables."""

from __future__ import annotations

from dataclasses import dataclass

from vantrel.reporting.labelled import WORDS, LabelledTable
from vantrel.reporting.design import Design
from vantrel.reporting.missing import Gaps, compare_gaps
from vantrel.reporting.lengths import Lengths, compare_lengths
from vantrel.reporting.names import Places, frequent_names
from vantrel.reporting.overlap import Reappearance, are_unchecked, reappearing_names
from vantrel.reporting.duplicates import Repeats, compare_repeats, compare_rows
from vantrel.reporting.frequencies import Shares, compare_shares

SHARED = ("gender", "title", "country")
MEASURED = ("username", "email")
DISTINCT = ("username", "email", "fullname")


@dataclass(frozen=True)
class Figures:
    """How a real table and a sample of it compare.

    Only labelled columns are looked at. An attribute that neither table holds has no entry.
    ``has_unchecked_names`` tells whether the sample has names and the real table has no columns to
    look for them in.
    """

    real_rows: int
    sampled_rows: int
    shares: tuple[Shares, ...]
    gaps: tuple[Gaps, ...]
    names: Places
    lengths: tuple[Lengths, ...]
    repeats: tuple[Repeats, ...]
    reappearing: tuple[Reappearance, ...]
    has_unchecked_names: bool


def compare(
    real: LabelledTable, sampled: LabelledTable, *, has_conditions: bool = False
) -> Figures:
    """Compares a real table with a sample of it.

    Time and memory are about linear in the rows; values are compared as texts.

    Args:
        real: The real table; it may have no rows.
        sampled: The sample; it may have no rows and lack columns, as the real table may.
        has_conditions: Whether genders or countries were given to make the sample.
    """
    design = Design(real, sampled, has_conditions)
    there = [attribute for attribute in WORDS if real.has(attribute) or sampled.has(attribute)]
    reappearing = reappearing_names(real, sampled)
    return Figures(
        len(real),
        len(sampled),
        tuple(compare_shares(design, each) for each in SHARED if each in there),
        tuple(compare_gaps(design, each) for each in there),
        frequent_names(real, sampled),
        tuple(compare_lengths(real, sampled, each) for each in MEASURED if each in there),
        (
            compare_rows(real, sampled),
            *(compare_repeats(real, sampled, each) for each in DISTINCT if each in there),
        ),
        reappearing,
        are_unchecked(real, sampled, reappearing),
    )
