"""How often rows and values repeat."""

from __future__ import annotations

from collections.abc import Sequence
from dataclasses import dataclass

import pandas as pd

from vantrel.reporting.labelled import WORDS, LabelledTable


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
    return Repeats(None, *(_of_rows(table, common) for table in (real, sampled)))


def compare_repeats(real: LabelledTable, sampled: LabelledTable, attribute: str) -> Repeats:
    """Counts the values of an attribute that repeat an earlier one; missing ones do not count."""
    return Repeats(attribute, *(_of(table.texts(attribute)) for table in (real, sampled)))


def _of_rows(table: LabelledTable, attributes: Sequence[str]) -> RepeatCount | None:
    if not attributes:
        return None
    labelled = [table.columns[attribute] for attribute in attributes]
    rows = table.df[labelled].dropna(how="all")
    alike = rows
    for column in labelled:
        # A row that stands alone in one column repeats no other: few are left to be compared.
        alike = alike[alike[column].duplicated(keep=False)]
    return RepeatCount(len(rows), int(alike.duplicated().sum()))


def _of(values: pd.Series | None) -> RepeatCount | None:
    if values is None:
        return None
    return RepeatCount(len(values), int(values.duplicated().sum()))
