"""Everything that a report compares, computed from the two tables."""

from __future__ import annotations

from dataclasses import dataclass

from vantrel.attributes import LEARNT, UNIQUE, WORDS
from vantrel.reporting.agreement.agreements import compare_agreement
from vantrel.reporting.agreement.rates import Agreement
from vantrel.reporting.duplicates import Duplicates, compare_duplicates, compare_rows
from vantrel.reporting.frequencies import Frequencies, compare_frequencies
from vantrel.reporting.labelled import LabelledTable
from vantrel.reporting.lengths import Lengths, compare_lengths
from vantrel.reporting.meant import Meant
from vantrel.reporting.missing import MissingRates, compare_all_missing_rates
from vantrel.reporting.names import Places, frequent_names
from vantrel.reporting.nearness.nearness import Nearness, compare_nearness
from vantrel.reporting.together import Together, compare_together

DISTINCT = (*UNIQUE, "fullname")


@dataclass(frozen=True)
class Figures:
    """How a real table and a sample of it compare.

    Only labelled columns are looked at. An attribute that neither table holds has no entry.
    """

    real_rows: int
    sampled_rows: int
    frequencies: tuple[Frequencies, ...]
    together: Together | None
    missing_rates: tuple[MissingRates, ...]
    names: Places
    lengths: tuple[Lengths, ...]
    duplicates: tuple[Duplicates, ...]
    agreement: tuple[Agreement, ...]
    nearness: Nearness


def compare_labelled(
    real: LabelledTable, sampled: LabelledTable, meant: Meant | None = None
) -> Figures:
    """Compares a real table with a sample of it.

    Time and memory are about linear in the rows; values are compared as texts.

    Args:
        real: The real table; it may have no rows.
        sampled: The sample; it may have no rows and lack columns, as the real table may.
        meant: What the model of the sample was to give, if that is known.
    """
    there = [attribute for attribute in WORDS if real.has(attribute) or sampled.has(attribute)]
    return Figures(
        len(real),
        len(sampled),
        tuple(compare_frequencies(real, sampled, each, meant) for each in LEARNT if each in there),
        compare_together(real, sampled, meant),
        compare_all_missing_rates(real, sampled, meant),
        frequent_names(real, sampled),
        tuple(compare_lengths(real, sampled, each) for each in UNIQUE if each in there),
        (
            compare_rows(real, sampled),
            *(compare_duplicates(real, sampled, each) for each in DISTINCT if each in there),
        ),
        compare_agreement(real, sampled),
        compare_nearness(real, sampled),
    )
