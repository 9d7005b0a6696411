"""Compares the columns that an action of their own changed: blanked, faked, shifted or hashed."""

from __future__ import annotations

from dataclasses import dataclass

from vantrel.reporting.copies.cells import compare_values, rows_of_a_person
from vantrel.reporting.copies.record import CopyRecord, OfPerson
from vantrel.reporting.nearness.forms import plain
from vantrel.reporting.nearness.in_place import BESIDE
from vantrel.reporting.nearness.shared import most_by_chance
from vantrel.tables import Table


@dataclass(frozen=True)
class ActedColumn:
    """A column that an action changed.

    Args:
        column: Its name.
        action: ``blank``, ``fake``, ``shift`` or ``hash``.
        cells: How many cells had a value that the action changes.
        same: How many of these are as in the original; of a blank column how many have any value.
        chance: How many would come out the same by chance.
        at_once: How many of these come out so together.
    """

    column: str
    action: str
    cells: int
    same: int
    chance: float = 0.0
    at_once: float = 1.0

    @property
    def is_changed(self) -> bool:
        """Whether chance explains what is as before; it does not if that is all there is."""
        is_all = 0 < self.cells == self.same
        return not is_all and self.same <= most_by_chance(self.chance, self.at_once)


def compare_acted(original: Table, copy: Table, record: CopyRecord) -> tuple[ActedColumn, ...]:
    """Compares the columns that actions changed; both tables have as many rows."""
    return tuple(
        _faked(original, copy, column, record)
        if action == "fake"
        else _changed(original, copy, column, action)
        for column, action in record.actions.items()
    )


# A number without what stays of it: a zero that it begins with, and a fraction that is none.
_NUMBER = r"^(-?)0?([0-9]*(?:\.[0-9]*[1-9][0-9]*)?)(?:\.0*)?$"
_CHANGING = rf"regexp_replace(was, '{_NUMBER}', '\1\2')"


def _number_of(kind: str) -> str:
    return rf"length(regexp_replace({_CHANGING}, '\P{{{kind}}}', '', 'g'))"


# How likely a value is to become itself: as its form has so many, by its digits and letters. Digits
# count as nine, for the first of a number is no zero.
_TO_ITSELF = f"exp(-ln(9) * {_number_of('Nd')} - ln(26) * {_number_of('L')})"

_LEFT = {
    "blank": ("became <> ''", "0.0"),
    "shift": ("was = became", "0.0"),
    "hash": ("was = became", _TO_ITSELF),
}

# All rows of a value come out the same at once.
_ACTED = """
    SELECT
        coalesce(sum(rows), 0), coalesce(sum(same), 0), coalesce(sum(rows * likely), 0),
        coalesce(sum(rows * rows * likely) / nullif(sum(rows * likely), 0), 1)
    FROM (
        SELECT count(*) AS rows, count(*) FILTER ({left}) AS same, {likely} AS likely
        FROM {beside} WHERE was <> '' OR became <> '' GROUP BY was
    ) WHERE likely < 1
"""


def _changed(original: Table, copy: Table, column: str, action: str) -> ActedColumn:
    left, likely = _LEFT[action]
    beside = BESIDE.format(
        own=f"{plain(original.named(column))} AS was",
        made=f"{plain(copy.named(column))} AS became",
    )
    sql = _ACTED.format(left=left, likely=likely, beside=beside)
    ((cells, same, chance, at_once),) = original.query(sql, copy)
    return ActedColumn(column, action, int(cells), int(same), float(chance), float(at_once))


def _faked(original: Table, copy: Table, column: str, record: CopyRecord) -> ActedColumn:
    people = [*record.people.values()] or [OfPerson([], {})]
    found = compare_values(original, copy, people[0], column)
    at_once = max(rows_of_a_person(original, each.key) for each in people)
    return ActedColumn(column, "fake", found.cells, found.same, found.chance, at_once)
