"""How often values are in the columns of a table: all that a model learns of it."""

from __future__ import annotations

from collections import Counter
from collections.abc import Collection, Iterable
from dataclasses import dataclass
from typing import Any

import numpy as np
import pandas as pd

from vantrel.hints import in_rows


@dataclass(frozen=True)
class TableCounts:
    """What was counted in a table.

    Attributes:
        rows: The number of rows.
        blank: How many of them have no value in any of the columns that were asked for.
        values: How often each value of a column is there, in the order of first appearance; a
            missing one is counted as None.
        first: The row that each value of a column is in at first, from 1 on.
    """

    rows: int
    blank: int
    values: dict[str, dict[Any, int]]
    first: dict[str, dict[Any, int]]

    def where(self, column: str, values: Collection[Any]) -> str:
        """Tells in how many rows some values of a column are, and in which each is at first."""
        rows = sum(self.values[column][value] for value in values)
        first = in_rows(sorted(self.first[column][value] for value in values))
        return first if rows == len(values) else f"{rows:,} rows, first in {first}"

    def missing(self, column: str) -> int:
        """How many rows have no value in a column whose values were counted."""
        return self.values[column].get(None, 0)


def count_frame(
    df: pd.DataFrame, columns: Collection[str], labelled: Collection[str]
) -> TableCounts:
    """Counts the values of columns, and the rows without any value in the labelled ones."""
    asked = [column for column in labelled if column in df]
    blank = int(df[asked].isna().all(axis="columns").sum()) if asked else 0
    counts = TableCounts(len(df), blank, {}, {})
    for column in columns:
        codes, distinct = df[column].factorize(use_na_sentinel=True)
        values = [*distinct.tolist(), None]  # the last has the code -1
        of_codes = Counter(codes.tolist())  # in the order of first appearance
        counts.values[column] = {values[code]: count for code, count in of_codes.items()}
        found, rows = np.unique(codes, return_index=True)
        counts.first[column] = {
            values[code]: row + 1
            for row, code in sorted(zip(rows.tolist(), found.tolist(), strict=True))
        }
    return counts


def merged(parts: Iterable[TableCounts]) -> TableCounts:
    """Adds up the counts of the parts of one table, which come in their order.

    The result is that of the whole table, however it was cut.
    """
    rows = blank = 0
    values: dict[str, Counter[Any]] = {}
    first: dict[str, dict[Any, int]] = {}
    for part in parts:
        for column, places in part.first.items():
            later = {value: rows + row for value, row in places.items()}
            first[column] = later | first.get(column, {})
        rows += part.rows
        blank += part.blank
        for column, counts in part.values.items():
            values.setdefault(column, Counter()).update(counts)
    return TableCounts(rows, blank, {column: dict(values[column]) for column in values}, first)
