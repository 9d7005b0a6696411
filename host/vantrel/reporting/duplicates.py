"""How often rows and values repeat."""

from __future__ import annotations

from collections.abc import Sequence
from dataclasses import dataclass

from vantrel.attributes import WORDS
from vantrel.reporting.labelled import LabelledTable


@dataclass(frozen=True)
class DuplicateCount:
    """How many there are and how many of them repeat an earlier one."""

    values: int
    repeated: int


@dataclass(frozen=True)
class Duplicates:
    """The repeats of whole rows, or of an attribute's values.

    Args:
        attribute: The attribute, or None for rows.
        real: The repeats in the real table; None where it has no such column, or both tables have
            none in common.
        sampled: The same in the sample.
    """

    attribute: str | None
    real: DuplicateCount | None
    sampled: DuplicateCount | None


def compare_rows(real: LabelledTable, sampled: LabelledTable) -> Duplicates:
    """Counts the rows that repeat an earlier one in every labelled column that both tables have.

    Rows without any value do not count.
    """
    common = [each for each in WORDS if real.has(each) and sampled.has(each)]
    return Duplicates(None, *(_of(table, common) for table in (real, sampled)))


def compare_duplicates(real: LabelledTable, sampled: LabelledTable, attribute: str) -> Duplicates:
    """Counts the values of an attribute that repeat an earlier one; missing ones do not count."""
    return Duplicates(attribute, *(_of(table, [attribute]) for table in (real, sampled)))


def _of(table: LabelledTable, attributes: Sequence[str]) -> DuplicateCount | None:
    """Counts by hashes of 64 bits: two of 10,000,000 values share one in 1 of 300,000 tables."""
    if not (attributes and table.has(*attributes)):
        return None
    columns = [table.column(attribute) for attribute in attributes]
    there = " OR ".join(f"{column} IS NOT NULL" for column in columns)
    ((values, distinct),) = table.table.query(
        f"SELECT count(*), count(DISTINCT hash({', '.join(columns)})) FROM {{rows}} WHERE {there}"
    )
    return DuplicateCount(values, values - distinct)
