"""How often rows and values repeat."""

from __future__ import annotations

from collections.abc import Sequence
from dataclasses import dataclass

import pandas as pd

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
    return Duplicates(None, *(_of_rows(table, common) for table in (real, sampled)))


def compare_duplicates(real: LabelledTable, sampled: LabelledTable, attribute: str) -> Duplicates:
    """Counts the values of an attribute that repeat an earlier one; missing ones do not count."""
    return Duplicates(attribute, *(_of(table.texts(attribute)) for table in (real, sampled)))


def _of_rows(table: LabelledTable, attributes: Sequence[str]) -> DuplicateCount | None:
    if not attributes:
        return None
    labelled = [table.columns[attribute] for attribute in attributes]
    rows = table.df[labelled].dropna(how="all")
    alike = rows
    for column in labelled:
        # A row that stands alone in one column repeats no other: few are left to be compared.
        alike = alike[alike[column].duplicated(keep=False)]
    return DuplicateCount(len(rows), int(alike.duplicated().sum()))


def _of(values: pd.Series | None) -> DuplicateCount | None:
    if values is None:
        return None
    return DuplicateCount(len(values), int(values.duplicated().sum()))
