"""Everything by which a sample could come near to real people."""

from __future__ import annotations

from collections.abc import Mapping, Sequence
from dataclasses import dataclass, replace

from vantrel.attributes import NAMES
from vantrel.reporting.labelled import LabelledTable
from vantrel.reporting.nearness.forms import (
    PARTS,
    Forms,
    addresses,
    first_and_last_name,
    full_name,
    usernames,
    whole_names,
)
from vantrel.reporting.nearness.in_place import InPlace, compare_in_place
from vantrel.reporting.nearness.last_names import compare_last_names
from vantrel.reporting.nearness.rare import Rare, compare_rare
from vantrel.reporting.nearness.rows import row_forms
from vantrel.reporting.nearness.shared import Shared, compare_shared

# The columns of a sample that hold whole names. Each is looked up in all those of the real table.
_WHOLE_NAMES: Mapping[str, Forms] = {
    "Full name": full_name,
    "First and last name together": first_and_last_name,
}

# They are made from names, so that they meet real ones no oftener than these do.
_MADE_FROM_NAMES = (addresses, usernames)


@dataclass(frozen=True)
class Nearness:
    """How near a sample comes to real people.

    Args:
        names: The whole names that it shares with them, by the columns that hold these.
        parts: What else it shares that tells one person from another.
        rows: The rows that it shares with them over all columns in common, if these tell people
            apart.
        rare: What few real people have.
        has_unchecked_names: Whether the sample has names, and the real table has no known columns
            to look for them in.
        in_place: The columns that were made up beside the real ones, row by row.
    """

    names: tuple[Shared, ...]
    parts: tuple[Shared, ...]
    rows: Shared | None
    rare: tuple[Rare, ...]
    has_unchecked_names: bool
    in_place: tuple[InPlace, ...] = ()

    @property
    def shared(self) -> Sequence[Shared]:
        """All that was looked for."""
        return [*self.names, *self.parts, *([self.rows] if self.rows else [])]


def compare_nearness(real: LabelledTable, sampled: LabelledTable) -> Nearness:
    """Looks in a sample for all that single real people bear, and for what few have."""
    found = compare_shared_with_people(real, sampled)
    last_names = compare_last_names(real, sampled)
    parts = (*([last_names] if last_names else []), *found.parts)
    return replace(
        found,
        parts=parts,
        rare=compare_rare(real, sampled),
        in_place=compare_in_place(real, sampled),
    )


def compare_shared_with_people(real: LabelledTable, sampled: LabelledTable) -> Nearness:
    """Looks in a sample for all that single real people bear."""
    tables = (real, sampled)
    real_names = whole_names(real)
    names = tuple(
        compare_shared(kind, tables, (real_names, forms(sampled)))
        for kind, forms in _WHOLE_NAMES.items()
        if real_names and forms(sampled)
    )
    of_names = max((each.chance for each in names), default=0.0)
    parts = tuple(
        compare_shared(
            kind,
            tables,
            (forms(real), forms(sampled)),
            of_names if forms in _MADE_FROM_NAMES else None,
        )
        for kind, forms in PARTS.items()
        if forms(real) and forms(sampled)
    )
    forms_of_rows = row_forms(real, sampled)
    rows = None
    if forms_of_rows:
        most = _whole_rows_by_chance([*names, *parts], len(sampled))
        rows = compare_shared("Whole row", tables, forms_of_rows, most)
    return Nearness(names, parts, rows, (), _has_unchecked_names(real, sampled))


def _whole_rows_by_chance(parts: Sequence[Shared], rows: int) -> float:
    """How many whole rows chance explains at most.

    Who shares a whole row shares all parts that it has, the least likely one included: how often
    that is counts for the rows that have this part, and the next one for those that lack it. Rows
    without any part are not compared.
    """
    most, left = 0.0, rows
    for part in sorted(filter(_has_rows, parts), key=_rate):
        lacking = min(left, rows - part.sampled_rows)
        most += _rate(part) * (left - lacking)
        left = lacking
    return most


def _has_rows(part: Shared) -> bool:
    return part.sampled_rows > 0


def _rate(part: Shared) -> float:
    return part.chance / part.sampled_rows


def has_whole_names(table: LabelledTable) -> bool:
    """Tells whether a table holds full names, or first and last ones."""
    return bool(whole_names(table))


def _has_unchecked_names(real: LabelledTable, sampled: LabelledTable) -> bool:
    if has_whole_names(sampled):
        return not has_whole_names(real)
    return any(map(sampled.has, NAMES)) and not any(map(real.has, NAMES))
