"""How often rows and values repeat."""

from __future__ import annotations

from collections.abc import Sequence
from dataclasses import dataclass

from vantrel.report.columns import WORDS, LabelledTable


@dataclass(frozen=True)
class RepeatCount:
    """How many there are and how many of them repeat an earlier one."""

    values: int
    repeated: int


@dataclass(frozen=True)
class Repeats:
    """The repeats of whole rows, or of an attribute's values.

    Args:
        attribute: The attribute, or None for rows.
        real: The repeats in the real table; None where it has no such column, or both tables have
            none in common.
        sampled: The same in the sample.
    """

    attribute: str | None
    real: RepeatCount | None
    sampled: RepeatCount | None


def compare_rows(real: LabelledTable, sampled: LabelledTable) -> Repeats:
    """Counts the rows that repeat an earlier one in every labelled column that both tables have.

    Rows without any value do not count.
    """
    common = [each for each in WORDS if real.has(each) and sampled.has(each)]
    return Repeats(None, *(_of(table, common) for table in (real, sampled)))


def compare_repeats(real: LabelledTable, sampled: LabelledTable, attribute: str) -> Repeats:
    """Counts the values of an attribute that repeat an earlier one; missing ones do not count."""
    return Repeats(attribute, *(_of(table, [attribute]) for table in (real, sampled)))


def _of(table: LabelledTable, attributes: Sequence[str]) -> RepeatCount | None:
    """Counts by hashes of 64 bits: two of 10,000,000 values share one in 1 of 300,000 tables."""
    if not (attributes and table.has(*attributes)):
        return None
    columns = [table.column(attribute) for attribute in attributes]
    there = " OR ".join(f"{column} IS NOT NULL" for column in columns)
    ((values, distinct),) = table.table.query(
        f"SELECT count(*), count(DISTINCT hash({', '.join(columns)})) FROM {{rows}} WHERE {there}"
    )
    return RepeatCount(values, values - distinct)
