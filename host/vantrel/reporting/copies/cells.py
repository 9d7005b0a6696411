"""Compares a table and its copy cell by cell, and person by person."""

from __future__ import annotations

from collections.abc import Sequence
from dataclasses import dataclass

from vantrel.reporting.copies.record import CopyRecord, OfPerson
from vantrel.reporting.nearness.in_place import ALIKE, BESIDE, count_in_place, meaning
from vantrel.reporting.nearness.shared import most_by_chance
from vantrel.tables import Table

_ACCOUNTS = ("email", "username")


@dataclass(frozen=True)
class Kept:
    """A column that had to stay.

    Args:
        column: Its name.
        differing: How many cells differ from those in the same row of the original.
    """

    column: str
    differing: int


@dataclass(frozen=True)
class ReplacedColumn:
    """A column whose people were replaced.

    Args:
        column: Its name.
        attribute: What it holds.
        cells: How many cells have a value in both tables.
        same: How many of these mean the same as in the original.
        chance: How many would, by expectation, if those of one country and gender were mixed.
        torn: How many keys have several values here, and so became several people.
        shared: How many values are of several keys, where none should be; else None.
        rows_of_one: How many rows one person has, as :func:`rows_of_a_person` tells.
    """

    column: str
    attribute: str
    cells: int
    same: int
    chance: float
    torn: int | None
    shared: int | None
    rows_of_one: float = 1.0

    @property
    def is_replaced(self) -> bool:
        """Whether no more cells are as they were than chance explains."""
        return self.same <= most_by_chance(self.chance, self.rows_of_one)


def compare_kept(original: Table, copy: Table, record: CopyRecord) -> tuple[Kept, ...]:
    """Compares the columns that had to stay, row by row; both tables have as many rows."""
    columns = [each for each in original.columns if each not in record.changed]
    if not columns:
        return ()
    own = ", ".join(f"{original.named(each)} AS a{at}" for at, each in enumerate(columns))
    made = ", ".join(f"{copy.named(each)} AS b{at}" for at, each in enumerate(columns))
    counts = ", ".join(
        f"count(*) FILTER (a{at} IS DISTINCT FROM b{at})" for at in range(len(columns))
    )
    beside = BESIDE.format(own=own, made=made)
    (found,) = original.query(f"SELECT {counts} FROM {beside}", copy)
    return tuple(map(Kept, columns, found))


def compare_replaced(
    original: Table, copy: Table, record: CopyRecord
) -> tuple[ReplacedColumn, ...]:
    """Compares the columns whose people were replaced; both tables have as many rows."""
    return tuple(
        compare_values(original, copy, person, column, attribute, key=person.key)
        for person in record.people.values()
        for column, attribute in person.replaced.items()
    )


def compare_values(
    original: Table,
    copy: Table,
    person: OfPerson,
    column: str,
    attribute: str = "",
    key: Sequence[str] = (),
) -> ReplacedColumn:
    """Compares a column of values made for a person, which are an attribute or something else."""
    alike = [original.named(person.columns[each][0]) for each in ALIKE if person.columns.get(each)]
    own = (
        f"{meaning(attribute, original.named(column))} AS was, {_whose(original, key)} AS key,"
        f" hash({', '.join(alike) or 'NULL'}) AS alike"
    )
    made = f"{meaning(attribute, copy.named(column))} AS became"
    cells, same, chance, torn, shared = count_in_place(original, copy, own, made)
    return ReplacedColumn(
        column,
        attribute,
        cells,
        same,
        chance,
        torn if key else None,
        shared if key and attribute in _ACCOUNTS else None,
        rows_of_a_person(original, key),
    )


def rows_of_a_person(table: Table, key: Sequence[str]) -> float:
    """How many rows a person has to whom a row belongs, on average: they become alike at once."""
    ((rows,),) = table.query(
        "SELECT sum(rows * rows) / sum(rows) FROM (SELECT count(*) AS rows FROM"
        f" (SELECT {_whose(table, key)} AS key FROM {{rows}}) WHERE key IS NOT NULL GROUP BY key)"
    )
    return float(rows or 1.0)


def _whose(table: Table, key: Sequence[str]) -> str:
    """What tells whose a row is; a key that is missing in part is nobody's."""
    parts = " || chr(31) || ".join(map(table.named, key)) or "NULL"
    return f"CASE WHEN {parts} IS NOT NULL THEN hash({parts}) END"
