"""How often combinations of values are in the rows of a table: all that a model learns of it."""

from __future__ import annotations

from collections import defaultdict
from collections.abc import Collection, Iterable, Mapping
from dataclasses import dataclass
from functools import cached_property
from typing import Any, NamedTuple

import numpy as np
import pandas as pd

from vantrel.hints import in_rows


class Found(NamedTuple):
    """In how many rows something is, and in which at first, from 1 on."""

    rows: int
    first: int


@dataclass(frozen=True)
class TableCounts:
    """What was counted in a table.

    Attributes:
        columns: The columns whose values were counted.
        labelled: The columns whose gaps were counted.
        combinations: What is in the same rows, in the order of first appearance: the values of the
            columns, a missing one as None, and then a number whose bits, from the lowest on, are
            the gaps of the labelled columns.
    """

    columns: tuple[str, ...]
    labelled: tuple[str, ...]
    combinations: dict[tuple[Any, ...], Found]

    @cached_property
    def rows(self) -> int:
        """The number of rows."""
        return sum(found.rows for found in self.combinations.values())

    @cached_property
    def blank(self) -> int:
        """How many rows have no value in any of the labelled columns."""
        if not self.labelled:
            return 0
        all_gaps = (1 << len(self.labelled)) - 1
        return sum(
            found.rows for (*_, gaps), found in self.combinations.items() if gaps == all_gaps
        )

    @cached_property
    def values(self) -> dict[str, dict[Any, int]]:
        """How often each value of a column is there, in the order of first appearance."""
        values: dict[str, dict[Any, int]] = {column: defaultdict(int) for column in self.columns}
        for cells, found in self.combinations.items():
            for counts, value in zip(values.values(), cells, strict=False):
                counts[value] += found.rows
        return {column: dict(counts) for column, counts in values.items()}

    @cached_property
    def first(self) -> dict[str, dict[Any, int]]:
        """The row that each value of a column is in at first, from 1 on."""
        first: dict[str, dict[Any, int]] = {column: {} for column in self.columns}
        for cells, found in self.combinations.items():
            for places, value in zip(first.values(), cells, strict=False):
                places.setdefault(value, found.first)
        return first

    def where(self, column: str, values: Collection[Any]) -> str:
        """Tells in how many rows some values of a column are, and in which each is at first."""
        rows = sum(self.values[column][value] for value in values)
        first = in_rows(sorted(self.first[column][value] for value in values))
        return first if rows == len(values) else f"{rows:,} rows, first in {first}"

    def without(self, hidden: Mapping[str, Collection[str]]) -> TableCounts:
        """Counts as if some values, by their texts, were missing from their columns."""
        sets = [hidden.get(column, ()) for column in self.columns]
        combinations: dict[tuple[Any, ...], Found] = {}
        for (*cells, gaps), found in self.combinations.items():
            left = tuple(
                None if str(cell) in each else cell for cell, each in zip(cells, sets, strict=True)
            )
            for bit, column in enumerate(self.labelled):
                if column in self.columns and left[self.columns.index(column)] is None:
                    gaps |= 1 << bit
            earlier = combinations.get((*left, gaps), Found(0, found.first))
            combinations[*left, gaps] = Found(earlier.rows + found.rows, earlier.first)
        return TableCounts(self.columns, self.labelled, combinations)

    def missing(self, column: str) -> int:
        """How many rows have no value in a column whose values were counted."""
        return self.values[column].get(None, 0)


def count_frame(
    df: pd.DataFrame, columns: Collection[str], labelled: Collection[str]
) -> TableCounts:
    """Counts the combinations of the values of columns and the gaps of the labelled ones."""
    gaps = np.zeros(len(df), dtype=np.int64)
    for bit, column in enumerate(labelled):
        if column in df:
            gaps |= df[column].isna().to_numpy(dtype=np.int64) << bit
    parts, together = [], np.zeros(len(df), dtype=np.int64)
    for values in (*(df[column] for column in columns), pd.Series(gaps)):
        codes, distinct = values.factorize(use_na_sentinel=True)
        parts.append((codes, [*distinct.tolist(), None]))  # the last has the code -1
        # Numbered anew after each column, or else the numbers would outgrow 64 bits.
        together, _ = pd.factorize(together * (len(distinct) + 1) + codes + 1)
    _, first, rows = np.unique(together, return_index=True, return_counts=True)
    cells = [[values[code] for code in codes[first].tolist()] for codes, values in parts]
    counted = map(Found, rows.tolist(), (first + 1).tolist())
    combinations = dict(zip(zip(*cells, strict=True), counted, strict=True))
    return TableCounts(tuple(columns), tuple(labelled), combinations)


def merged(parts: Iterable[TableCounts]) -> TableCounts:
    """Adds up the counts of the parts of one table, which come in their order.

    The result is that of the whole table, however it was cut.
    """
    rows = 0
    combinations: dict[tuple[Any, ...], Found] = {}
    for part in parts:
        for cells, found in part.combinations.items():
            earlier = combinations.get(cells, Found(0, rows + found.first))
            combinations[cells] = Found(earlier.rows + found.rows, earlier.first)
        rows += part.rows
        columns, labelled = part.columns, part.labelled
    return TableCounts(columns, labelled, combinations)
