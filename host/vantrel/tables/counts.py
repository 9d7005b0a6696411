"""How often values are in the columns of a table: all that a model learns of it."""

from __future__ import annotations

from collections import Counter
from collections.abc import Collection, Iterable
from dataclasses import dataclass
from typing import Any

import pandas as pd


@dataclass(frozen=True)
class TableCounts:
    """What was counted in a table.

    Attributes:
        rows: The number of rows.
        blank: How many of them have no value in any of the columns that were asked for.
        values: How often each value of a column is there, in the order of first appearance; a
            missing one is counted as None.
    """

    rows: int
    blank: int
    values: dict[str, dict[Any, int]]

    def missing(self, column: str) -> int:
        """How many rows have no value in a column whose values were counted."""
        return self.values[column].get(None, 0)


def count_frame(
    df: pd.DataFrame, columns: Collection[str], labelled: Collection[str]
) -> TableCounts:
    """Counts the values of columns, and the rows without any value in the labelled ones."""
    asked = [column for column in labelled if column in df]
    blank = int(df[asked].isna().all(axis="columns").sum()) if asked else 0
    return TableCounts(len(df), blank, {column: _values(df[column]) for column in columns})


def _values(column: pd.Series) -> dict[Any, int]:
    codes, distinct = column.factorize(use_na_sentinel=True)
    counts = Counter(codes.tolist())  # in the order of first appearance
    values = distinct.tolist()
    return {None if code < 0 else values[code]: count for code, count in counts.items()}


def merged(parts: Iterable[TableCounts]) -> TableCounts:
    """Adds up the counts of the parts of one table, which come in their order.

    The result is that of the whole table, however it was cut.
    """
    rows = blank = 0
    values: dict[str, Counter[Any]] = {}
    for part in parts:
        rows += part.rows
        blank += part.blank
        for column, counts in part.values.items():
            values.setdefault(column, Counter()).update(counts)
    return TableCounts(rows, blank, {column: dict(counts) for column, counts in values.items()})
