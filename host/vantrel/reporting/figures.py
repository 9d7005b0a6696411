"""Everything that a report compares, computed from the two tables."""

from __future__ import annotations

from dataclasses import dataclass

from vantrel.attributes import LEARNT, UNIQUE, WORDS
from vantrel.reporting.agreement.agreements import compare_agreement
from vantrel.reporting.agreement.rates import Agreement
from vantrel.reporting.design import Design
from vantrel.reporting.duplicates import Duplicates, compare_duplicates, compare_rows
from vantrel.reporting.frequencies import Frequencies, compare_frequencies
from vantrel.reporting.labelled import LabelledTable
from vantrel.reporting.lengths import Lengths, compare_lengths
from vantrel.reporting.missing import MissingRates, compare_missing_rates
from vantrel.reporting.names import Places, frequent_names
from vantrel.reporting.nearness.nearness import Nearness, compare_nearness

DISTINCT = (*UNIQUE, "fullname")


@dataclass(frozen=True)
class Figures:
    """How a real table and a sample of it compare.

    Only labelled columns are looked at. An attribute that neither table holds has no entry.
    """

    real_rows: int
    sampled_rows: int
    frequencies: tuple[Frequencies, ...]
    missing_rates: tuple[MissingRates, ...]
    names: Places
    lengths: tuple[Lengths, ...]
    duplicates: tuple[Duplicates, ...]
    agreement: tuple[Agreement, ...]
    nearness: Nearness


def compare_labelled(
    real: LabelledTable,
    sampled: LabelledTable,
    *,
    has_conditions: bool = False,
    is_bare: bool = True,
) -> Figures:
    """Compares a real table with a sample of it.

    Time and memory are about linear in the rows; values are compared as texts.

    Args:
        real: The real table; it may have no rows.
        sampled: The sample; it may have no rows and lack columns, as the real table may.
        has_conditions: Whether genders or countries were given to make the sample.
        is_bare: Whether the bare model may have made it.
    """
    design = Design(real, sampled, has_conditions, is_bare)
    there = [attribute for attribute in WORDS if real.has(attribute) or sampled.has(attribute)]
    return Figures(
        len(real),
        len(sampled),
        tuple(compare_frequencies(design, each) for each in LEARNT if each in there),
        tuple(compare_missing_rates(design, each) for each in there),
        frequent_names(real, sampled),
        tuple(compare_lengths(real, sampled, each) for each in UNIQUE if each in there),
        (
            compare_rows(real, sampled),
            *(compare_duplicates(real, sampled, each) for each in DISTINCT if each in there),
        ),
        compare_agreement(real, sampled),
        compare_nearness(real, sampled),
    )
