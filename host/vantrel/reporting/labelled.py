"""Looks up the columns of a table by the attribute that each holds."""

from __future__ import annotations

from collections.abc import Mapping, Sequence
from dataclasses import dataclass, field
from functools import cached_property
from typing import Any

from vantrel.arguments import as_frame
from vantrel.attributes import WORDS
from vantrel.tables import Table, frame_table


@dataclass(frozen=True)
class LabelledTable:
    """A table and what its columns hold.

    Args:
        table: The table; what is asked of it is counted where it is kept.
        columns: Its columns by the attribute that each holds; others are not looked at.
        locales: The locales whose names the people of some countries were given.
    """

    table: Table
    columns: Mapping[str, str]
    locales: Mapping[str, str] = field(default_factory=dict)

    def __len__(self) -> int:
        """The number of rows."""
        return self._filled[None]

    def has(self, *attributes: str) -> bool:
        """Tells whether the table holds all of these attributes."""
        return all(self.columns.get(attribute) in self.table.columns for attribute in attributes)

    def column(self, attribute: str) -> str:
        """What the column of an attribute that the table holds is called in SQL."""
        return self.table.named(self.columns[attribute])

    def missing_rate(self, attribute: str) -> float | None:
        """How often an attribute is missing, from 0 to 1; None where there is none or no row."""
        if not (len(self) and self.has(attribute)):
            return None
        return (len(self) - self._filled[attribute]) / len(self)

    def filled(self, attribute: str) -> int | None:
        """How many rows have an attribute; None where the table has no such column."""
        return self._filled.get(attribute)

    def counts(self, attribute: str) -> dict[str, int] | None:
        """Counts the values of an attribute; None where the table has no such column.

        The most frequent comes first, equally frequent ones in the order of the alphabet.
        """
        if not self.has(attribute):
            return None
        value = self.column(attribute)
        return dict(
            self.table.query(
                f"SELECT {value}, count(*) FROM {{rows}} WHERE {value} IS NOT NULL GROUP BY 1"
                " ORDER BY 2 DESC, 1"
            )
        )

    def combinations(self, attributes: Sequence[str]) -> dict[tuple[str | None, ...], int]:
        """Counts what attributes that the table has hold together; a missing value is None."""
        if not attributes:
            return {}
        cells = ", ".join(map(self.column, attributes))
        found = self.table.query(f"SELECT {cells}, count(*) FROM {{rows}} GROUP BY ALL")
        return {tuple(cells): rows for *cells, rows in found}

    @cached_property
    def _filled(self) -> dict[str | None, int]:
        attributes = list(filter(self.has, WORDS))
        counts = "".join(f", count({self.column(attribute)})" for attribute in attributes)
        (found,) = self.table.query(f"SELECT count(*){counts} FROM {{rows}}")
        return dict(zip([None, *attributes], found, strict=True))


def column_names(real: LabelledTable, sampled: LabelledTable, attribute: str) -> str:
    """What an attribute's column is called: both names, the real one first, if they differ."""
    names = [table.columns[attribute] for table in (real, sampled) if table.has(attribute)]
    return " / ".join(dict.fromkeys(names))


def as_table(table: Any, what: str) -> Table:
    """Takes a table in any form; ``what`` is the subject of the sentence that refuses it."""
    return table if isinstance(table, Table) else frame_table(as_frame(table, what))
